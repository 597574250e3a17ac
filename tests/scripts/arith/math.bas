# The one-number math built-ins give doubles; domain errors give the C
# library's NaN or infinity, which isnan can test.
print sin(0); " "; cos(0); " "; tan(0)  # expect: 0.000000 1.000000 0.000000
print asin(1); " "; acos(1); " "; atan(1)  # expect: 1.570796 0.000000 0.785398
print log(1); " "; log(2.718281828459045)  # expect: 0.000000 1.000000
print log2(8); " "; log10(1000)  # expect: 3.000000 3.000000
print sqr(16); " "; abs(-2.5); " "; abs(3)  # expect: 4.000000 2.500000 3.000000
print log(0)  # expect: -inf
print isnan(sqr(-1)); " "; isnan(1); " "; isnan(log(0))  # expect: 1 0 0
print isnan(asin(2))  # expect: 1
# a string argument is read as a number
print sqr("9")  # expect: 3.000000
# extra arguments are ignored
print abs(-1, 5)  # expect: 1.000000
# with no argument at all the result is the integer 0, without an error
print sin()  # expect: 0
