# "seek" below the length moves and returns the position; at or past the
# length it fails without a message and sets nothing. A text slot counts
# its read-ahead buffer back for "iseof" but not for "getfilepos".
open "s.txt" for output as 1 text
x = writeline(1, "ab")
x = writeline(1, "cd")
close 1
open "s.txt" as 2 text
print filesize(2)                       # expect: 18.000000
print getfilepos(2)                     # expect: 2.000000
x = readline(2)
print getfilepos(2)                     # expect: 18.000000
print iseof(2)                          # expect: 0
p = seek(2, 18)
print p                                 # expect:
p = seek(2, 10)
print p                                 # expect: 10.000000
x = readline(2)
print left(x, 2)                        # expect: cd
print iseof(2)                          # expect: 1
p = seek(2, -1)
print p                                 # expect:
x = seek(2)                             # expect error 24
close 2
