# Assignment without "=", or with nothing after it.
y  # expect error 3
# the token in place of "=" is used up
x 5  # expect error 3
z =  # expect error 2
print z  # expect:
w = (1 + 2  # expect error 1
print w  # expect: 3.000000
print "end"  # expect: end
