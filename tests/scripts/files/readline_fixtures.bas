# Lines of files written by another program: UTF-16 with a mark and 8-bit
# Windows-1252 text without one. A last line without a line end still comes
# back with "\r\n" added; the call after it returns "".
open "utf16_lines.txt" as 1 text
x = readline(1)
print left(x, len(x) - 2)               # expect: first line
x = readline(1)
print left(x, len(x) - 2)               # expect: second été €
x = readline(1)
print len(x)                            # expect: 2
x = readline(1)
x = readline(1)
print left(x, len(x) - 2)               # expect: last without end
print len(readline(1))                  # expect: 0
close 1
open "ansi_lines.txt" as 2 text
x = readline(2)
print left(x, len(x) - 2)               # expect: café €5
x = readline(2)
x = readline(2)
print left(x, len(x) - 2)               # expect: end
print len(readline(2))                  # expect: 0
close 2
