# "runexe" and "run" without an operand do nothing and report nothing.
runexe
run
print "next"  # expect: next
