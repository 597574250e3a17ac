# A table made by "dbfcreate" and filled by "dbfappend", then read back.
dim f1[3]
f1[0] = "NAME"
f1[1] = "C"
f1[2] = 10
dim f2[4]
f2[0] = "PRICE"
f2[1] = "N"
f2[2] = 5
f2[3] = 2
dim f3[3]
f3[0] = "OK"
f3[1] = "BOOL"
f3[2] = 10
h = dbfcreate("fruit", f1, f2, f3)
print h                                 # expect: 0
print dbfappend(h, "apple", 1.5, "yes") # expect: True
print dbfappend(h, "pear", "3.14159", "maybe") # expect: True
x = dbfappend(h, "fig", 1)              # expect error 24
print dbfnumrecords(h)                  # expect: 2
print dbfnumfields(h)                   # expect: 3
n = dbffieldnames(h)
print n[0]                              # expect: NAME
print n[1]                              # expect: PRICE
print n[2]                              # expect: OK
print dbfclose(h)                       # expect: True
h = dbfopen("fruit.dbf")
print h                                 # expect: 0
v = dbfread(h)
print v[0] + "|"                        # expect: apple     |
print v[1] + "|"                        # expect: 1.50              |
print v[2]                              # expect: y
v = dbfread(h)
print v[0] + "|"                        # expect: pear      |
print v[1] + "|"                        # expect: 3.14              |
print v[2]                              # expect: ?
print dbfseek(h, 0)                     # expect: True
v = dbfread(h)
print v[0] + "|"                        # expect: apple     |
print dbfseek(h, 3)                     # expect: False
x = dbfclose(h)
print dbfopen("nothing")                # expect: -1
