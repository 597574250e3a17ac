# A false if whose endif never comes skips to the end of the program and
# reports the missing endif on the if's line.
print "start"  # expect: start
if 1 = 2 then  # expect error 56
print "never"
