# Statements that run many times behave as written when what they read
# changes between two runs: a number becomes a text, an array is read past
# its end, a single value becomes an array, a watch appears.
x = 1
s = 0
for i = 1 to 3
  s = s + x * 2  # expect error 14
  # (the third time x holds a text: "*" is no text operation)
  if i = 2 then
    x = "7"
  endif
next
print s  # expect: 11.000000
dim a[3]
a[0] = 1
a[1] = 2
a[2] = 3
t = 0
for i = 0 to 3
  t = t + a[i] * 10  # expect error 36, 18
next
print t  # expect: 60.000000
b = 5
for i = 1 to 2
  c = b + 1
  print c  # expect: 6.000000
  # expect: 6.000000
  # b becomes an array; b[0] keeps 5
  dim b[3]
next
n = 0
d = 0
do while n < 3
  n = n + 1
  if d > 1 then
    d = "x"
  endif
  d = d + 1
loop
print n; " "; d  # expect: 3.000000 x1.000000
event create Changed, onchanged
global w
w = 0
for i = 1 to 3
  w = w + 1
  # expect: w is 2.000000
  # expect: w is 3.000000
  if i = 1 then
    watch create w, Changed
  endif
next
print w  # expect: 3.000000
end

function onchanged(v)
  print "w is "; v
endfunction
