# ubound takes a variable's name and gives its element count.
dim a[5]
print ubound("a")  # expect: 5
x = 1
print ubound("x")  # expect: 1
dim u
print ubound("u")  # expect: 0
print ubound("nosuchname")  # expect: 0
# locals are found whatever the case of the name
print ubound("A")  # expect: 5
