# A map of 100,000 keys works and is freed at the end of the program.
map create "big"
for i = 1 to 100000
  x = mapset("big", str(i), i)
next
k = mapgetkeys("big")
print ubound("k")  # expect: 100000
print mapget("big", "77777.000000")  # expect: 77777.000000
print maphas("big", "100001.000000")  # expect: False
map clear "big"
k2 = mapgetkeys("big")
print ubound("k2")  # expect: 0
for i = 1 to 100000
  x = mapset("big", str(i), i)
next
print "refilled"  # expect: refilled
