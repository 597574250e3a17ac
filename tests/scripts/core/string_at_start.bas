# A string literal cannot begin a statement; the run ends. This is also what
# happens to the rest of a print line after a literal followed by "+".
print "one"  # expect: one
print "a" + "b"  # expect error 18
# expect: a
print "never"
