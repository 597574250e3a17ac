# len counts a string's characters as an integer and gives the double 0.0
# for anything that is not a string; val and str convert.
print len("abc")  # expect: 3
print len("")  # expect: 0
print len(5)  # expect: 0.000000
n = 12
print len(n)  # expect: 0.000000
print len(str(n))  # expect: 9
print val("12abc")  # expect: 12.000000
print val("abc")  # expect: 0.000000
print val("1e3")  # expect: 1000.000000
print val(" -2.5")  # expect: -2.500000
print str(2.5)  # expect: 2.500000
print str(len("ab"))  # expect: 2
print str(True)  # expect: True
x = len()  # expect error 24
x = val()  # expect error 24
x = str()  # expect error 24
