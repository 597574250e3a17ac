# "while" is a secondary keyword: a line starting with it cannot begin a
# statement and ends the run.
print "one"  # expect: one
while x < 3  # expect error 18
print "never"
