# A name read again at the same place finds what the store holds now:
# variables created, removed and shadowed between two reads of one spot.
# parameters bound again after garbagecollection removed the deeper locals
print twice(4)  # expect: 8.000000
r = garbagecollection()
print twice(5)  # expect: 10.000000
# the result is gone at every call until the body assigns it
x = unset(1)  # expect error 19
x = unset(2)  # expect error 19
# one spot read at many levels
print depth(20)  # expect: 210.000000
# a loop variable found by "next" keeps counting across calls in the body
t = 0
for i = 1 to 5
  t = t + depth(i)
next
print t; " "; i  # expect: 35.000000 6.000000
# a global made after the first read shadows the local of the same spelling
v = 1
for k = 1 to 2
  print v  # expect: 1.000000
  if k = 1 then
    global v
    v = 7
  endif
next
# expect: 7.000000
end
function twice(a)
  twice = a * 2
endfunction
function unset(a)
  b = a
endfunction
function depth(n)
  if n > 0 then
    depth = depth(n - 1) + n
  else
    depth = 0
  endif
endfunction
