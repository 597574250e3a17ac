# print writes a string literal verbatim and adds the line feed itself.
print "hello"  # expect: hello
print "a # inside quotes is text"  # expect: a # inside quotes is text
print ""  # expect:
