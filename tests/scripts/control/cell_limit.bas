# A budget of variables plus array elements ends a script that keeps growing
# an array with error 105.
# args: --max-cells=1000
print "start"  # expect: start
base = 10
step = 1
i = 0
do while 1 = 1
  dim a[base + i]
  i = i + step
loop  # expect error 105
