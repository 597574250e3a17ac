# A text file created with "output" starts with FF FE and its lines end in
# the UTF-16 bytes 0D 00 0A 00. Bytes read with size 1 are signed.
open "u.txt" for output as 1 text
print writeline(1, "A")                 # expect: 1
close 1
open "u.txt" as 2
print filesize(2)                       # expect: 8.000000
b = read(2, 8, 1)
for i = 0 to 7
  print b[i]
next
# expect: -1
# expect: -2
# expect: 65
# expect: 0
# expect: 13
# expect: 0
# expect: 10
# expect: 0
print iseof(2)                          # expect: 1
close 2
