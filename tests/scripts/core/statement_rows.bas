# Loops whose statements all run without the text path in between: nested
# for/next with if/else, do while with early skips, a block skipped over
# many times, and statements that leave the row mid-loop (print, a call,
# an error) before it goes on.
s = 0
for i = 1 to 4
  for j = 1 to 3
    if j < 2 then
      s = s + i
    else
      s = s + j * 10
    endif
  next
next
print s  # expect: 210.000000
k = 0
m = 0
do while k < 6
  k = k + 1
  if k > 3 then
    m = m + k
  endif
loop
print m  # expect: 15.000000
n = 0
for i = 1 to 5
  if i > 100 then
    n = n + 1000
  else
    n = n + 1
    if i = 3 then
      print "three"  # expect: three
    endif
  endif
next
print n  # expect: 5.000000
for i = 1 to 2
  q = i * 2
next
print i; " "; q  # expect: 3.000000 4.000000
# the loop variable becomes a whole number, then a text, inside the loop
for i = 1 to 4
  if i = 2 then
    i = len("abc")
  endif
  print i  # expect: 1.000000
  # expect: 3
  # expect: 4
next
for j = 1 to 3
  j = "x"
next
print j  # expect: x
t = 0
for i = 1 to 3
  t = t + twice(i)
next
print t  # expect: 12.000000
# the "if" whose block never ends: reported when the skip runs, once
z = 0
for i = 1 to 2
  z = z + 1
next
if z > 5 then  # expect error 56
  print "never"

function twice(x)
  r = 0
  for k = 1 to 2
    if k > 0 then
      r = r + x
    endif
  next
  twice = r
endfunction
