# Handles are positions in the list of open tables: closing one moves the
# later ones down.
dim f[3]
f[0] = "A"
f[1] = "C"
f[2] = 1
a = dbfcreate("one", f)
f[0] = "B"
b = dbfcreate("two", f, f)
c = dbfcreate("three", f, f, f)
print a                                 # expect: 0
print b                                 # expect: 1
print c                                 # expect: 2
print dbfclose(1)                       # expect: True
print dbfnumfields(1)                   # expect: 3
print dbfnumfields(2)                   # expect: 0
print dbfclose(-1)                      # expect: -1
print dbfclose(2)                       # expect: False
print dbfnumrecords(7)                  # expect: 0
print dbfwrite(7, 0, "x")               # expect: 0
x = dbfnumrecords(-1)                   # expect error 57
x = dbfread(-3)                         # expect error 57
x = dbfopen()                           # expect error 24
x = dbfseek(0)                          # expect error 24
x = dbfdelete(0)                        # expect error 24
dim bad[2]
bad[0] = "X"
bad[1] = "C"
x = dbfcreate("bad", f, bad)            # expect error 24
print x                                 # expect: -1
print dbfclose(2)                       # expect: False
