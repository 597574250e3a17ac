# Operator precedence, associativity and the language's own "^" and "%".
print 2 + 3 * 4  # expect: 14.000000
print (2 + 3) * 4  # expect: 20.000000
print 10 - 4 - 3  # expect: 3.000000
print 8 / 4 / 2  # expect: 1.000000
print 2 ^ 3 ^ 2  # expect: 512.000000
# a sign binds tighter than "^"
print -2 ^ 2  # expect: 4.000000
print 2 ^ 0  # expect: 1.000000
# the exponent is rounded up; zero-or-less repetitions leave the base
print 2 ^ -3  # expect: 2.000000
print 2 ^ 2.5  # expect: 8.000000
print 2 ^ 0.5  # expect: 2.000000
# "%" does not truncate the quotient, so it is 0 up to rounding
print 7 % 2  # expect: 0.000000
print 3 * -2  # expect: -6.000000
# only one sign is taken: the second one is a missing operand (error 0),
# after which "- 3" is read as a subtraction from the negated empty value
print - - 3  # expect error 0
# expect: -3.000000
print ((((1))))  # expect: 1.000000
# a string on the left concatenates the right operand's string form
s = "a" + 1
print s  # expect: a1.000000
s = "x" + "y" + "z"
print s  # expect: xyz
# a number on the left reads the right operand as a number
n = 1 + "2"
print n  # expect: 3.000000
n = 1 + "12abc"
print n  # expect: 13.000000
n = 0 + "1e3"
print n  # expect: 1000.000000
n = 5 + True
print n  # expect: 6.000000
# a sign in front of a string converts it to a number
n = -"4"
print n  # expect: -4.000000
# strings only concatenate: any other operator is error 14
s = "ab" - "b"  # expect error 14
print s  # expect: ab
s = "ab" * 2  # expect error 14
# the literal 1e-5 is the number 1e (that is 1) minus 5
n = 1e-5
print n  # expect: -4.000000
n = 2.5e2
print n  # expect: 250.000000
