# A statement budget ends a runaway loop with error 102 on the statement that
# would have gone past it; nothing after runs.
# args: --max-steps=1000
print "start"  # expect: start
x = 0
do while 1 = 1
  x = x + 1
loop  # expect error 102
print "never"
