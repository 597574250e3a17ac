# people.dbf was written by another dBase implementation (Debian's
# python3-dbf); its last record is deleted and is read like the others.
h = dbfopen("people")
print dbfnumrecords(h)                  # expect: 4
print dbfnumfields(h)                   # expect: 5
n = dbffieldnames(h)
print n[4]                              # expect: BORN
r = dbfread(h)
print r[0] + "|"                        # expect: Ann         |
print r[1] + "|"                        # expect:    31|
print r[2] + "|"                        # expect:   12.50|
print r[3]                              # expect: T
print r[4]                              # expect: 19930405
x = dbfseek(h, 2)
r = dbfread(h)
print r[0] + "|"                        # expect: Zoë Café    |
print r[3]                              # expect: ?
r = dbfread(h)
print r[0] + "|"                        # expect: Gone        |
r = dbfread(h)
print r                                 # expect:
print dbfclose(h)                       # expect: True
