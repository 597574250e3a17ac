# What goes wrong around dotted names: no such variable (37), a variable
# that holds no object (31), no such member (34), a wrong argument count for
# createobject (24), and a method that raises an exception, whose
# description is shown; the script goes on after each.
x = nosuch.Value  # expect error 37
x = nosuch.Run(1)  # expect error 37
nosuch.Value = 1  # expect error 37
n = 5
x = n.Value  # expect error 31
x = n.Run(1)  # expect error 31
n.Value = 1  # expect error 31
s = "text"
x = s.Length()  # expect error 31
o = createobject()  # expect error 24
o = createobject("Test.Calc", 1)  # expect error 24
o = createobject("Test.Calc")
x = o.Fail("out of paper")  # expect: Test.Calc: out of paper (0x80004005)
x = o.Nosuch  # the unknown property reads as no value
print "after"  # expect: after
