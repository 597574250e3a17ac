# "open" accepts file numbers 1 to 256 only; a missing "as" counts as -1.
open "slot.txt" for output as 0         # expect error 46
open "slot.txt" for output as 257       # expect error 46
open "slot.txt" for output              # expect error 46
open "slot.txt" for output as 1
open "slot.txt" for input as 256.9
print filesize(256)                     # expect: 0.000000
print getfilepos(1)                     # expect: 0.000000
close 1
close 256
x = filesize(1)                         # expect error 49
x = filesize(0)                         # expect error 49
x = filesize(65537)                     # expect error 49
