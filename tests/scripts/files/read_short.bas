# "read" that asks for more bytes than the file holds fails with error 51
# and leaves the position at the end; a huge count fails the same way
# without allocating memory for it.
dim v[5]
open "five.bin" for output as 1
x = write(1, v, 1)
close 1
open "five.bin" as 1
a = read(1, 3, 2)                       # expect error 51
print iseof(1)                          # expect: 1
p = seek(1, 0)
a = read(1, 1000000000, 8)              # expect error 51
a = read(1, -1, 1)                      # expect error 50
p = seek(1, 1)
a = read(1, 2, 2)
print a[1]                              # expect: 0
print getfilepos(1)                     # expect: 5.000000
close 1
