print "Grüße €"                         # expect: Grüße €
# The UTF-8 mark before the first statement is not part of the text.
print len("€")                          # expect: 1
