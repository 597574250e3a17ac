# Assignments of texts and of the string built-ins keep their exact values
# and types however often they run: appends in a loop, substrings at the
# edges, lengths inside sums, numbers joined to texts.
s = ""
for i = 1 to 1000
  s = s + "ab"
next
print len(s); "|"; mid(s, 1997, 10); "|"; left(s, 3); "|"; right(s, 1)  # expect: 2000|bab|aba|b
# a text appended to itself, and numbers appended in their printed forms
s = "xy"
for i = 1 to 3
  s = s + s
next
print s  # expect: xyxyxyxyxyxyxyxy
s = "n"
s = s + 7 + len(s)
print s  # expect: n7.0000001
# "len" and "instr" give whole numbers, shown without decimals, until they
# take part in a sum; "len" of a number is the double 0
n = len("abc")
p = instr("abc", "c")
q = len("abc") + 0
z = len(5)
print n; " "; p; " "; q; " "; z  # expect: 3 2 3.000000 0.000000
# a text after a number counts as the number it begins with
k = 5
k = k + "2.5"
m = -"4" + len("ab")
print k; " "; m  # expect: 7.500000 -2.000000
# zero-based starts, negative and oversized counts, empty texts
total = 0
t = "abcdef"
for i = -2 to 8
  u = mid(t, i, 3) + "|" + left(t, i) + "|" + right(t, i)
  total = total + len(u) + instr(u, "c")
next
print total  # expect: 140.000000
print "|"; left("", 3); mid("", 0, 3); right(t, -1); "|"  # expect: ||
# texts are counted in characters of the script's code page
e = "xäöy"
print len(e); " "; left(e, 3); " "; mid(e, 1, 4)  # expect: 4 xäö äöy
print ucase("abc") + lcase("DEF")  # expect: ABCdef
# a condition on texts compares them as texts
if left(t, 2) = "ab" then
  print "prefix"  # expect: prefix
endif
w = "ab"
do while len(w) < 5
  w = w + "c"
loop
print w  # expect: abccc
# an element and a number variable take texts too
dim r[2]
r[1] = "q"
r[1] = r[1] + r[1] + left(t, 1)
k = "x" + 1
print r[1]; " "; k  # expect: qqa x1.000000
# what the built-ins refuse is reported as it always is
x = left(t)  # expect error 24
x = t - "a"  # expect error 14

