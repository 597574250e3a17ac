# A script saved as UTF-8 without a mark is read as UTF-8: its non-ASCII
# characters are one character each and print unchanged.
print "Grüße €"                         # expect: Grüße €
print len("Grüße €")                    # expect: 7
print ucase("grüße")                    # expect: GRÜßE
print mid("Grüße €", 2, 1)              # expect: ü
