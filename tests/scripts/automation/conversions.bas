# Results of types the language has no counterpart for arrive as their
# text; empty and null results and error codes as no value. Test.Variants is
# an object written against the C interface.
v = createobject("test.VARIANTS")
print v.Date  # expect: 2024-01-15 10:30:00
print v.Currency  # expect: 12.5
print v.Byte  # expect: 200
print v.Big  # expect: 1099511627776
print v.Flag  # expect: -1
print v.Single  # expect: 2.500000
print v.Short  # expect: -7
shown = "[" + v.Null + "]"
print shown  # expect: []
shown = "[" + v.Error + "]"
print shown  # expect: []
print v.Count(1, "two", v)  # expect: 3
print v.Count()  # expect: 0
print v.First(2.9)  # expect: 2
print v.First("2.9")  # expect: 2.9
x = v.Fail()  # expect: Test.Variants: the device is not ready (0x80004005)
x = v.Mismatch()  # expect: Type mismatch (0x80020005)
