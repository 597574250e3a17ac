# Running into a label line stops the program with error 18.
print "before"  # expect: before
here:  # expect error 18
print "never"
