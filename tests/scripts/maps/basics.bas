# Named maps hold whole variables under string keys; names and keys are
# case-sensitive.
map create "m"
print mapset("m", "a", 1)  # expect: False
print mapget("m", "a")  # expect: 1.000000
print maphas("m", "a"); " "; maphas("m", "A")  # expect: True False
print mapget("m", "missing")  # expect: 0.000000
# storing again under a key replaces the value
x = mapset("m", "a", "text")
print mapget("m", "a")  # expect: text
print mapremove("m", "a"); " "; mapremove("m", "a")  # expect: True False
print maphas("m", "a")  # expect: False
# keys and names are strings: numbers are taken in their string form
x = mapset("m", 2, "two")
print mapget("m", "2.000000")  # expect: two
# the name is any expression
n = "m"
print mapget(n + "", 2)  # expect: two
# another map of a different case is another map
map create "M"
print maphas("M", 2)  # expect: False
print maphas("m", 2)  # expect: True
