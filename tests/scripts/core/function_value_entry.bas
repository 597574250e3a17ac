# A function's value does not exist from the start of each call until its
# body sets it: not counted, not collected, not found.
a = 0
b = 0
r = garbagecollection()
b = before(1)
r = garbagecollection()
a = after(1)
print a - b  # expect: 1.000000
# a call that never sets its value leaves only its other locals behind
r = garbagecollection()
for k = 1 to 3
  call noval(k)
  print garbagecollection()  # expect: 2
next
# expect: 2
# expect: 2
# set again after it was collected, found again
print twice(3) + twice(4)  # expect: 14.000000
r = garbagecollection()
print twice(5)  # expect: 10.000000
end
function before(x)
  s = getvarstats()
  before = s[0]
endfunction
function after(x)
  after = 1
  s = getvarstats()
  after = s[0]
endfunction
function noval(x)
  y = x
endfunction
function twice(x)
  twice = x * 2
endfunction
