# print shows each value's string form: numbers are doubles with six
# decimals, truth values are words, infinity is the C library's text.
print 2.5  # expect: 2.500000
print 7  # expect: 7.000000
print -0.125  # expect: -0.125000
print True  # expect: True
print False  # expect: False
print 1/0  # expect: inf
print -1/0  # expect: -inf
print 1e300 * 1e300  # expect: inf
print "a"; "b"  # expect: ab
print 1; 2  # expect: 1.0000002.000000
print "a", "b"  # expect: a       b
# every comma adds the whole output so far to the column count
print "ab", "c", "d"  # expect: ab      c       d
print ""  # expect:
s = "text"
print s  # expect: text
print "n="; 3  # expect: n=3.000000
PRINT "upper"  # expect: upper
Print "mixed"  # expect: mixed
