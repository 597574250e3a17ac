# A map of many keys works, empties, and is freed at the end of the program
# (kept to 30,000 keys so that the sanitizer build stays quick; the unit
# tests take a map to 100,000).
map create "big"
for i = 1 to 30000
  x = mapset("big", str(i), i)
next
k = mapgetkeys("big")
print ubound("k")  # expect: 30000
print mapget("big", "27777.000000")  # expect: 27777.000000
print maphas("big", "30001.000000")  # expect: False
map clear "big"
k2 = mapgetkeys("big")
print ubound("k2")  # expect: 0
