# A memory budget ends a script that doubles a string forever with error
# 106, before the string is built, whatever else it is given.
# args: --max-memory=20000000 --timeout=60
print "start"  # expect: start
s = "x"
do while 1 = 1
  s = s + s  # expect error 106
loop
