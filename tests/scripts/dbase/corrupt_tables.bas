# Tables whose files are empty, cut short or inconsistent give -1 from
# "dbfopen" and no error; nothing is left open.
open "empty.dbf" for output as 1
close 1
print dbfopen("empty")                  # expect: -1
dim h[49]
h[0] = 3
h[8] = 65
h[11] = 0
h[32] = 65
h[43] = 67
h[48] = 4
open "short.dbf" for output as 1
x = write(1, h, 1)
close 1
print dbfopen("short")                  # expect: -1
h[8] = 20
open "small.dbf" for output as 1
x = write(1, h, 1)
close 1
print dbfopen("small")                  # expect: -1
h[8] = 33
h[10] = 1
h[32] = 13
open "nofield.dbf" for output as 1
x = write(1, h, 1)
close 1
t = dbfopen("nofield")
print t                                 # expect: 0
print dbfnumfields(t)                   # expect: 0
r = dbfread(t)
print r                                 # expect:
print dbfclose(t)                       # expect: True
print dbfclose(0)                       # expect: False
