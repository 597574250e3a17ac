# Arrays: zero-based subscripts, bounds, sizes 1 to 16000, redeclaration.
dim a[5]
a[4] = 1
print a[4]  # expect: 1.000000
a[5] = 1  # expect error 36
a[-1] = 1  # expect error 36
print a[5]  # expect error 36
# expect: 
a[0] = "zero"
print a[0]  # expect: zero
# a subscript is truncated toward zero and may be any expression
a[2.9] = "two"
print a[2]  # expect: two
i = 1
a[i + 2] = "three"
print a[3]  # expect: three
print a["3"]  # expect: three
dim b[0]  # expect error 32
dim b[16001]  # expect error 32
dim b[16000]
b[15999] = "last"
print b[15999]  # expect: last
b[16000] = 1  # expect error 36
# assigning element 0 creates a variable; a higher element of an unknown one is an error
x[2] = 1  # expect error 35
x[0] = 7
print x  # expect: 7.000000
# redeclaring keeps the elements that still fit
dim c[3]
c[2] = "kept"
dim c[5]
print c[2]  # expect: kept
c[4] = "grown"
dim c[2]
c[2] = 1  # expect error 36
# dim without a size shrinks to one element
dim c
c[1] = 1  # expect error 36
# several declarations in one statement
dim p, q[2], r as integer, s[3] as string
q[1] = "q1"
s[2] = "s2"
print q[1]; s[2]  # expect: q1s2
# an array assigned to an unindexed name is copied whole
dim src[3]
src[1] = "one"
copy = src
print copy[1]  # expect: one
copy[1] = "changed"
print src[1]  # expect: one
# malformed declarations
dim 5  # expect error 1
dim e as nosuchtype  # expect error 1
dim f as while  # expect error 1
dim g[2  # expect error 1
# a bad subscript is reported by the index reader and by the variable read,
# which then takes element 0
print a[1 2]  # expect error 1, 1
# expect: zero
print "end"  # expect: end
