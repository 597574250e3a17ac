# "append" opens an existing file without truncating it and writes from its
# start (after the mark of a marked text file), not at its end.
dim v[5]
v[0] = 104
v[1] = 101
v[2] = 108
v[3] = 108
v[4] = 111
open "plain.txt" for output as 1
x = write(1, v, 1)
close 1
open "plain.txt" for append as 1 text
x = writeline(1, "J")
close 1
open "plain.txt" as 1
b = read(1, 5, 1)
for i = 0 to 4
  print b[i]
next
# expect: 74
# expect: 13
# expect: 10
# expect: 108
# expect: 111
close 1
open "marked.txt" for output as 2 text
x = writeline(2, "abcdef")
close 2
open "marked.txt" for append as 2 text
print getfilepos(2)                     # expect: 2.000000
x = writeline(2, "X")
close 2
open "marked.txt" as 2 text
x = readline(2)
print left(x, len(x) - 2)               # expect: X
x = readline(2)
print left(x, len(x) - 2)               # expect: def
close 2
