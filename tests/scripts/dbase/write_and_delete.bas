# "dbfwrite" replaces a record, "dbfdelete" marks one with "*"; the file is
# finished on close with one 0x1A (26) after the last record.
dim f[3]
f[0] = "NAME"
f[1] = "C"
f[2] = 4
h = dbfcreate("wd", f)
x = dbfappend(h, "aaaa")
x = dbfappend(h, "bbbb")
x = dbfappend(h, "cccc")
print dbfwrite(h, 1, "BB")              # expect: True
print dbfwrite(h, 3, "DD")              # expect: False
print dbfdelete(h, 2)                   # expect: True
print dbfdelete(h, 3)                   # expect: False
x = dbfwrite(h, 1)                      # expect error 24
print dbfclose(h)                       # expect: True
open "wd.dbf" as 1
print filesize(1)                       # expect: 81.000000
p = seek(1, 65)
b = read(1, 16, 1)
close 1
for i = 0 to 15
  print b[i]
next
# expect: 32
# expect: 97
# expect: 97
# expect: 97
# expect: 97
# expect: 32
# expect: 66
# expect: 66
# expect: 32
# expect: 32
# expect: 42
# expect: 99
# expect: 99
# expect: 99
# expect: 99
# expect: 26
