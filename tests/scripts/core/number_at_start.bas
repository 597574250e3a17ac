# A number cannot begin a statement; the run ends.
print "one"  # expect: one
10 print "never"  # expect error 18
print "never"
