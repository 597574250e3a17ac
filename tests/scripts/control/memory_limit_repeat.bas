# One built-in call whose result would exceed the budget is refused before
# it allocates; smaller ones inside the budget run as without it.
# args: --max-memory=6000000
a = repeat("ab", 500000)
print len(a)  # expect: 1000000
b = replace(a, "a", "xyz")  # expect error 106
print "not reached"
