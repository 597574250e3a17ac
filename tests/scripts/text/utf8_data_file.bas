# Under --codepage=utf-8 an 8-bit text file is UTF-8: lines come back
# intact, also where a character straddles two read chunks, and lines are
# written in UTF-8.
# args: --codepage=utf-8
open "utf8_lines.txt" as 1 text
x = readline(1)
print left(x, len(x) - 2)               # expect: Grüße €
x = readline(1)
print len(x)                            # expect: 259
print mid(x, 240, 4)                    # expect: xxéü
print mid(x, 254, 3)                    # expect: end
x = readline(1)
print left(x, len(x) - 2)               # expect: last 😀
close 1
# "append" on a file without a mark writes 8-bit text from the file's start.
open "utf8_lines.txt" for append as 2 text
print writeline(2, "Ça va")             # expect: 1
close 2
open "utf8_lines.txt" for input as 3 text
x = readline(3)
print left(x, len(x) - 2)               # expect: Ça va
x = readline(3)
print left(x, len(x) - 2)               # expect: €
close 3
