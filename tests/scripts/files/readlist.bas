# "readlist" splits the next line at any delimiter character and keeps the
# numbers up to the first token that is no number.
open "utf16_lines.txt" as 1 text
x = readline(1)
x = readline(1)
x = readline(1)
a = readlist(1, ";")
print ubound("a")                       # expect: 2
print a[0]                              # expect: 1.000000
print a[1]                              # expect: 2.000000
close 1
open "ansi_lines.txt" as 2 text
x = readline(2)
b = readlist(2, ",")
print b[0]                              # expect: 10.000000
print b[1]                              # expect: 20.500000
print ubound("b")                       # expect: 2
c = readlist(2, ",")
print c                                 # expect:
c = readlist(2, ",")
print c                                 # expect:
close 2
open "ansi_lines.txt" as 3
c = readlist(3, ",")                    # expect error 52
