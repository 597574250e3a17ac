# A stored array comes back whole from mapget; the enumerations give one
# element per key (in hash order, so only order-free facts are checked here).
map create "m"
dim arr[3]
arr[0] = 10
arr[1] = 20
arr[2] = 30
x = mapset("m", "list", arr)
back = mapget("m", "list")
print ubound("back"); " "; back[2]  # expect: 3 30.000000
# changing the source later does not change the stored copy
arr[2] = 99
back = mapget("m", "list")
print back[2]  # expect: 30.000000
# a single key: its name and its value
map create "one"
x = mapset("one", "only", "v")
k = mapgetkeys("one")
print k  # expect: only
v = mapgetvalues("one")
print v  # expect: v
# three keys give three-element arrays; an array contributes its first element
x = mapset("m", "b", 2)
x = mapset("m", "c", 3)
keys = mapgetkeys("m")
vals = mapgetvalues("m")
print ubound("keys"); " "; ubound("vals")  # expect: 3 3
total = 0
for i = 0 to 2
  total = total + vals[i]
next
print total  # expect: 15.000000
# an empty map leaves the result unset
map create "empty"
e = mapgetkeys("empty")
print ubound("e")  # expect: 0
