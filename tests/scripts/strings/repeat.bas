# repeat concatenates a text n times; extra arguments are ignored.
print repeat("ab", 3)  # expect: ababab
print "|"; repeat("ab", 0); "|"; repeat("ab", -2); "|"; repeat("", 5); "|"  # expect: ||||
print repeat("x", 2.9)  # expect: xx
print repeat("x", 2, "ignored", 7)  # expect: xx
print len(repeat("abc", 1000))  # expect: 3000
# an empty text repeated any number of times is quick and empty
print len(repeat("", 2000000000))  # expect: 0
# a result past the length limit is refused instead of exhausting memory
x = repeat("abcd", 2000000000)  # expect error 45
x = repeat("ab")  # expect error 24
