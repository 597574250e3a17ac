# The "map" statement takes "create" or "clear" and a name; the built-ins
# check their argument counts.
map remove "m"  # expect error 29
map "m"  # expect error 1
map create  # expect error 1
map create nosuchvariable  # expect error 37, 1
map clear  # expect error 1
map  # expect error 1
print "next line runs"  # expect: next line runs
map create "ok"
x = mapset("ok", "k")  # expect error 24
x = mapget("ok")  # expect error 24
x = maphas("ok", "k", 1)  # expect error 24
x = mapremove("ok")  # expect error 24
x = mapgetkeys()  # expect error 24
x = mapgetvalues("ok", 1)  # expect error 24
print "done"  # expect: done
