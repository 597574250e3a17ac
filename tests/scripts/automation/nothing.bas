# "Nothing" is the null object: it has no members. A comparison whose left
# side is an object is false whatever the operator; an object's text is its
# handle, "0" for the null object. createobject with an unknown identifier
# shows why and gives the null object.
o = Nothing
shown = "[" + o.Value + "]"
print shown  # expect: []
x = o.Add(1, 2)  # expect error 34
o.Value = 1  # expect error 34
shown = "" + o
print shown  # expect: 0
c = createobject("Test.Calc")
if c = c then
  print "equal"
else
  print "objects do not compare"  # expect: objects do not compare
endif
if c <> Nothing then
  print "different"
else
  print "not even unequal"  # expect: not even unequal
endif
x = c + 1  # expect error 18
n = createobject("No.Such.Thing")  # expect: No.Such.Thing: Invalid class string (0x800401F3)
shown = "" + n
print shown  # expect: 0
print c.IsSame(n)  # expect: 0
