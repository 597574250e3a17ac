# left, right and mid take zero-based positions and clamp every count and
# position to the text, so no call reads outside the string.
s = "abcdef"
print left(s, 2)  # expect: ab
print right(s, 2)  # expect: ef
print mid(s, 1, 2)  # expect: bc
print LEFT(s, 3)  # expect: abc
# counts past the end give the whole text
print left(s, 99)  # expect: abcdef
print right(s, 99)  # expect: abcdef
print mid(s, 4, 99)  # expect: ef
# zero and negative counts give an empty text (shown between bars)
print "|"; left(s, 0); "|"; left(s, -1); "|"; right(s, 0); "|"; right(s, -5); "|"  # expect: |||||
print "|"; mid(s, 2, 0); "|"; mid(s, 2, -1); "|"  # expect: |||
# a start past the end gives an empty text; a negative start counts from 0
print "|"; mid(s, 6, 2); "|"; mid(s, 99, 2); "|"  # expect: |||
print mid(s, -3, 2)  # expect: ab
# counts are truncated toward zero; huge ones saturate instead of wrapping
print left(s, 2.9); "|"; mid(s, 1.9, 1.9); "|"; left(s, 1e300); "|"; right(s, -1e300); "|"  # expect: ab|b|abcdef||
# an empty text stays empty
print "|"; left("", 3); "|"; mid("", 0, 3); "|"  # expect: |||
# numbers are taken in their string form
print left(2.5, 3)  # expect: 2.5
# wrong argument counts
x = left(s)  # expect error 24
x = right(s, 1, 2)  # expect error 24
x = mid(s, 1)  # expect error 24
