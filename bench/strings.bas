# String building: concatenation in a loop.
s = ""
for i = 1 to 20000
  s = s + "x"
next
print "done"
