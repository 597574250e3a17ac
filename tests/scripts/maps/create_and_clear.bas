# "map create" a second time gives an empty map; "map clear" empties one
# that stays usable.
map create "m"
x = mapset("m", "k", 5)
map create "m"
print maphas("m", "k")  # expect: False
x = mapset("m", "k", 5)
map clear "m"
print maphas("m", "k")  # expect: False
x = mapset("m", "k", 6)
print mapget("m", "k")  # expect: 6.000000
# a map that was never made is no error
print mapset("none", "k", 1)  # expect: False
print mapget("none", "k")  # expect: 0.000000
print maphas("none", "k"); " "; mapremove("none", "k")  # expect: False False
k = mapgetkeys("none")
print ubound("k")  # expect: 0
map clear "none"
print "done"  # expect: done
