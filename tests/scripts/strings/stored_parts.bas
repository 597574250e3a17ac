# Parts of texts stored by assignments that run again and again: taken from
# a variable or a literal, stored into the variable they come from, into
# array elements and into names that do not exist yet; parts of numbers.
s = "abcdefgh"
dim a[3]
for k = 1 to 3
  t = right(s, k)
  u = mid("literal", k, 2)
  w = left(s, k + 10)
  a[k - 1] = mid(s, k, 3)
  n = left(12345, k)
  print t; " "; u; " "; w; " "; a[k - 1]; " "; n
next
# expect: h it abcdefgh bcd 1
# expect: gh te abcdefgh cde 12
# expect: fgh er abcdefgh def 123
# a variable takes a part of itself, long and short
r = "0123456789abcdefghijklmnopqrstuvwxyz"
q = "xyz"
for k = 1 to 3
  r = mid(r, 1, 100)
  q = left(q, len(q) - 1)
  print left(r, 3); " "; len(r); " |"; q; "|"
next
# expect: 123 35 |xy|
# expect: 234 34 |x|
# expect: 345 33 ||
# a name made by the part stored into it
for k = 1 to 3
  r = garbagecollection()
  print firsttwo("part" + str(k))
next
# expect: pa
# expect: pa
# expect: pa
end
function firsttwo(x)
  p = left(x, 2)
  firsttwo = p
endfunction
