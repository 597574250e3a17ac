# "end" ends the run like "stop".
print "one"  # expect: one
End
print "never"
