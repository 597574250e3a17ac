# Method calls with arguments: numbers are passed as whole numbers (the
# fraction dropped), objects as objects, everything else as text.
c = createobject("Test.Calc")
print c.Add(2, 3)  # expect: 5
print c.Add(2.9, 3.9)  # expect: 5
print c.Add(-2.9, 0)  # expect: -2
print c.Add("4", 1)  # expect: 5
print c.add(c.Add(1, 2), c.Value)  # expect: 3
print c.TypeOf(1.5)  # expect: I4
print c.TypeOf(True)  # expect: I4
print c.TypeOf("x")  # expect: BSTR
print c.TypeOf(c)  # expect: DISPATCH
dim u
print c.TypeOf(u)  # expect: BSTR
print c.Echo(2.5)  # expect: 2
print c.Echo("text")  # expect: text
print c.Half(5)  # expect: 2.500000
print c.Join(1, "b", 3)  # expect: 1,b,3
# a truth value coming back is taken as its text
print c.IsSame(c)  # expect: -1
shown = "[" + c.Nothing() + "]"
print shown  # expect: []
x = c.Add(1)  # expect: Invalid number of parameters (0x8002000E)
x = c.Nosuch(1)  # expect error 34
print "after"  # expect: after
