# Without --codepage an 8-bit text file is Windows-1252, also when its bytes
# are UTF-8: each byte is one character.
open "utf8_lines.txt" as 1 text
x = readline(1)
print len(x)                            # expect: 13
close 1
