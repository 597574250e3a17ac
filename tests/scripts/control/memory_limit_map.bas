# Map entries count with their values: a map that keeps growing by values
# of 1 MB ends with error 106 although it holds few entries.
# args: --max-memory=20000000 --max-cells=100000
map create "m"
big = repeat("x", 524288)
i = 0
do while 1 = 1
  call mapset("m", str(i), big)  # expect error 106
  i = i + 1
loop
