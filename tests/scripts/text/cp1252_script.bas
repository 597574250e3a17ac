# A script in Windows-1252 (not valid UTF-8) is read in the 8-bit code page;
# the same words print the same.
print "Grüße €"                         # expect: Grüße €
print len("Grüße €")                    # expect: 7
