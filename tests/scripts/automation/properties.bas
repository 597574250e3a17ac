# Properties of an automation object: read in expressions, written with
# object.property = value, names matched without regard to case. An unknown
# property reads as no value without an error; writing one is error 34.
c = createobject("Test.Calc")
print c.Version  # expect: 1.0
print c.Value  # expect: 0
c.Value = 41
print c.VALUE  # expect: 41
print c.value + 1  # expect: 42.000000
c.Value = c.Value * 2
print c.Value  # expect: 82
c.Name = "calc"
print c.Name  # expect: calc
# numbers go to objects as whole numbers
c.Name = 12.75
print c.Name  # expect: 12
shown = "[" + c.Missing + "]"
print shown  # expect: []
c.Missing = 1  # expect error 34
# a read-only property refuses the write; the object says why
c.Version = "2.0"  # expect: Member not found (0x80020003)
print c.Version  # expect: 1.0
call rename(c, "inner")
print c.Name  # expect: inner
end

sub rename(obj, newname)
  obj.Name = newname
endsub
