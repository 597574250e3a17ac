# dBase throughput: 10,000 records appended with "dbfappend", the table
# closed, opened again and every record read back; prints the count read.
# The table goes to /tmp so that running the benchmark leaves no file behind
# in the working directory.
dim fname[3]
fname[0] = "NAME"
fname[1] = "C"
fname[2] = 20
dim fqty[3]
fqty[0] = "QTY"
fqty[1] = "N"
fqty[2] = 10
dim fprice[4]
fprice[0] = "PRICE"
fprice[1] = "F"
fprice[2] = 20
fprice[3] = 2
dim fok[3]
fok[0] = "OK"
fok[1] = "L"
fok[2] = 1
h = dbfcreate("/tmp/orvobasic_bench_append", fname, fqty, fprice, fok)
for i = 1 to 10000
  x = dbfappend(h, "item", i, i / 4, "T")
next
x = dbfclose(h)
h = dbfopen("/tmp/orvobasic_bench_append")
count = 0
for i = 1 to dbfnumrecords(h)
  r = dbfread(h)
  count = count + 1
next
x = dbfclose(h)
print count
