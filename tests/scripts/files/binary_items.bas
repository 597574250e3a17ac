# Packed little-endian items: size 1 is written and read signed, sizes 2 and
# 4 are written unsigned, size 4 reads back signed, size 8 is a double.
dim v[3]
v[0] = -1
v[1] = 300.9
v[2] = 65537
open "b.bin" for output as 1
print write(1, v, 1)                    # expect: 3
print write(1, v, 2)                    # expect: 3
print write(1, v, 4)                    # expect: 3
print write(1, 2.5, 8)                  # expect: 1
print filesize(1)                       # expect: 29.000000
x = write(1, v, 3)                      # expect error 45
close 1
open "b.bin" as 1
a = read(1, 3, 1)
print a[0]                              # expect: -1
print a[1]                              # expect: 44
print a[2]                              # expect: 1
a = read(1, 3, 2)
print a[0]                              # expect: 65535
print a[1]                              # expect: 300
print a[2]                              # expect: 1
a = read(1, 3, 4)
print a[0]                              # expect: -1
print a[1]                              # expect: 300
print a[2]                              # expect: 65537
a = read(1, 1, 8)
print a                                 # expect: 2.500000
print iseof(1)                          # expect: 1
x = read(1, 1, 5)                       # expect error 45
x = read(1, 1)                          # expect error 24
x = write(1, v)                         # expect error 24
close 1
