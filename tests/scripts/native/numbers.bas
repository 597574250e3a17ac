# Numbers by value: integers truncated to 32 bits, a "char" keeping its low
# byte, floats in their own registers, long parameter lists partly on the stack.
declare function ob_add lib "obtest" (byval a as integer, byval b as integer) as integer
declare function ob_negate_char lib "obtest" (byval c as char) as integer
declare function ob_char_result lib "obtest" (byval n as integer) as char
declare function ob_mix lib "obtest" (byval a as integer, byval b as float, byval c as integer, byval d as float, byval e as char) as float
declare function ob_float_bits lib "obtest" (byval x as double) as integer
declare function ob_weighted20 lib "obtest" (byval a1 as integer, byval b1 as float, byval a2 as integer, byval b2 as float, byval a3 as integer, byval b3 as float, byval a4 as integer, byval b4 as float, byval a5 as integer, byval b5 as float, byval a6 as integer, byval b6 as float, byval a7 as integer, byval b7 as float, byval a8 as integer, byval b8 as float, byval a9 as integer, byval b9 as float, byval a10 as integer, byval b10 as float) as float
declare function ob_weighted32 lib "obtest" (byval a1 as integer, byval a2 as integer, byval a3 as integer, byval a4 as integer, byval a5 as integer, byval a6 as integer, byval a7 as integer, byval a8 as integer, byval a9 as integer, byval a10 as integer, byval a11 as integer, byval a12 as integer, byval a13 as integer, byval a14 as integer, byval a15 as integer, byval a16 as integer, byval a17 as integer, byval a18 as integer, byval a19 as integer, byval a20 as integer, byval a21 as integer, byval a22 as integer, byval a23 as integer, byval a24 as integer, byval a25 as integer, byval a26 as integer, byval a27 as integer, byval a28 as integer, byval a29 as integer, byval a30 as integer, byval a31 as integer, byval a32 as integer) as integer
print ob_add(2, 3)  # expect: 5
print ob_add(2.9, -1.9)  # expect: 1
print ob_add(2147483647, 0)  # expect: 2147483647
print OB_ADD("40", 2)  # expect: 42
# 300 passes its low byte, 44
print ob_negate_char(300)  # expect: -44
print ob_char_result(200)  # expect: -56
print ob_mix(2, 1.5, 3, 0.5, 4)  # expect: 8.500000
# a script "double" reaches the callee as a 32-bit float: 1.5 is 0x3FC00000
print ob_float_bits(1.5)  # expect: 1069547520
print ob_weighted20(1, 0.5, 2, 1, 3, 1.5, 4, 2, 5, 2.5, 6, 3, 7, 3.5, 8, 4, 9, 4.5, 10, 5)  # expect: 577.500000
print ob_weighted32(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 21, 22, 23, 24, 25, 26, 27, 28, 29, 30, 31, 32)  # expect: 11440
# the same declaration serves every call; nested calls as arguments
total = 0
for i = 1 to 100
  total = ob_add(total, ob_add(i, 0))
next
print total  # expect: 5050
