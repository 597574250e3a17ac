# "writeline" writes every item of an array, cuts items after each line feed
# and ends every piece with a line end; "readline" hands lines back with
# "\r\n" added and "" at the end of the file.
dim lines[3]
lines[0] = "one"
lines[1] = "two"
lines[2] = "three"
open "w.txt" for output as 1 text
print writeline(1, lines)               # expect: 3
print writeline(1, "", "ASCII")         # expect: 1
print writeline(1, 42)                  # expect: 1
close 1
open "w.txt" for input as 1 text
for i = 1 to 5
  x = readline(1)
  print len(x)
  print left(x, len(x) - 2)
next
# expect: 5
# expect: one
# expect: 5
# expect: two
# expect: 7
# expect: three
# expect: 11
# expect: 42.000000
# expect: 0
# expect:
x = readline(1)
print len(x)                            # expect: 0
print iseof(1)                          # expect: 1
close 1
# the encoding argument does not change what is written
open "w.txt" for output as 2 text
x = writeline(2, "x", "ASCII")
close 2
open "w.txt" as 3
print filesize(3)                       # expect: 8.000000
close 3
