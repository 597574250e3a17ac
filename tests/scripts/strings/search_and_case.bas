# instr gives a zero-based position or -1; replace changes every occurrence;
# lcase and ucase copy the text.
print instr("abc", "z")  # expect: -1
print instr("abc", "a")  # expect: 0
print instr("abcabc", "ca")  # expect: 2
print instr("abc", "")  # expect: 0
print instr("", "a")  # expect: -1
print instr("abc", "abcd")  # expect: -1
print instr("ABC", "b")  # expect: -1
print replace("a-b-c", "-", "+")  # expect: a+b+c
print replace("aaa", "a", "bb")  # expect: bbbbbb
print replace("abc", "x", "y")  # expect: abc
# an empty text to replace changes nothing
print replace("abc", "", "y")  # expect: abc
print "|"; replace("abc", "abc", ""); "|"  # expect: ||
print lcase("MiXeD 123")  # expect: mixed 123
print ucase("MiXeD 123")  # expect: MIXED 123
print ucase("")  # expect:
x = instr("abc")  # expect error 24
x = replace("abc", "a")  # expect error 24
x = lcase()  # expect error 24
x = ucase()  # expect error 24
