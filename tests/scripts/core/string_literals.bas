# String literals: no escapes, "#" inside is text, and a literal without its
# closing quote on the line runs on over the line end to the next quote.
print "a # b"  # expect: a # b
print "it's"  # expect: it's
s = "first
second"
print s  # expect: first
# expect: second
print "tab	in"  # expect: tab	in
print "é ü ß"  # expect: é ü ß
