# With automation denied, createobject and every dotted form on an object
# report error 21 and do nothing else; the script goes on.
# args: --deny=automation
o = createobject("Test.Calc")  # expect error 21
x = o.Value  # expect error 21
o.Value = 1  # expect error 21
x = o.Add(1, 2)  # expect error 21
print "still running"  # expect: still running
