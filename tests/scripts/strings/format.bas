# format applies one printf-style conversion to one value; the letter decides
# how the value is passed.
print format(5, "%d items")  # expect: 5 items
print format(2.5, "%.2f")  # expect: 2.50
print format(-2.9, "%d")  # expect: -2
print format(255, "%x %X %o")  # expect: ff %X %o
print format(-1, "%x")  # expect: ffffffff
print format(300, "%hhu")  # expect: 44
print format(3000000000, "%d")  # expect: 2147483647
print format(3000000000, "%lld")  # expect: 3000000000
print format(42, "[%5d|%-5d]")  # expect: [   42|%-5d]
print format(7, "%05.1f")  # expect: 007.0
print format(1234.5, "%e")  # expect: 1.234500e+03
print format("abc", "<%5s>")  # expect: <  abc>
print format("abc", "<%-5s>")  # expect: <abc  >
print format("abcdef", "%.2s")  # expect: ab
print format(2.5, "%s")  # expect: 2.500000
print format("12abc", "%d")  # expect: 12
print format(65, "%c%c")  # expect: A%c
print format("xyz", "%c")  # expect: x
print format(7, "100%% sure: %d%%")  # expect: 100% sure: 7%
print format(7, "no conversion")  # expect: no conversion
# hostile formats give defined text and never crash
print format("x", "%s%s%s%n")  # expect: x%s%s%n
print format(1, "%")  # expect: %
print format(1, "%l")  # expect: %l
print format(1, "%n")  # expect: %n
print format(1, "%*d")  # expect: %*d
print format(1, "%p")  # expect: %p
print format(1, "a%")  # expect: a%
print len(format(5, "%999999999d"))  # expect: 4096
print len(format(5, "%.999999999f"))  # expect: 4098
print len(format("x", "%99999999999999999999s"))  # expect: 4096
x = format(5)  # expect error 24
x = format(5, "%d", 1)  # expect error 24
