# max and min take at least two numbers and give a double.
print max(1, 5, 2)  # expect: 5.000000
print min(4, -2, 3)  # expect: -2.000000
print max(2, 2); " "; min(-1, -1)  # expect: 2.000000 -1.000000
print max("10", 9)  # expect: 10.000000
x = max(3)  # expect error 24
x = min(3)  # expect error 24
# no argument at all is the arithmetic family's quiet 0
print max()  # expect: 0
