# Calls of script functions inside assignments that run more than once: each
# call happens once, whatever the rest of the statement turns out to need
# (a text result, an error inside the function, no value, too few
# arguments), and the value and the output are those of a single evaluation.
global n
n = 0
for i = 1 to 2
  a = noisy(1) + texty(2) + noisy(3)
  print a
  b = noisy(i) + twice(n)
  print b
  c = noisy(1) + broken(2) + noisy(3)
  print c
  d = noisy(1) + noval(2) + noisy(3)  # expect error 19, 19
  print d
  e = noisy(1) + twice() + noisy(3)  # expect error 24, 24
  print e
next
# expect: noisy1.000000
# expect: noisy2.000000
# expect: 7.000000
# expect: noisy3.000000
# expect: 10.000000
# expect: noisy4.000000
# expect: noisy5.000000
# expect: 15.000000
# expect: noisy6.000000
# expect: noval
# expect: noisy7.000000
# expect: 17.000000
# expect: noisy8.000000
# expect: noisy9.000000
# expect: 21.000000
# expect: noisy10.000000
# expect: noisy11.000000
# expect: 25.000000
# expect: noisy12.000000
# expect: 38.000000
# expect: noisy13.000000
# expect: noisy14.000000
# expect: 33.000000
# expect: noisy15.000000
# expect: noval
# expect: noisy16.000000
# expect: 35.000000
# expect: noisy17.000000
# expect: noisy18.000000
# expect: 39.000000
# a function that makes the target a global, and one that reads what the
# statement is about to change
for i = 1 to 2
  m = makeglobal(i)
  print m
  n = bump(n) + n
  print n
next
# expect: 10.000000
# expect: 119.000000
# expect: 20.000000
# expect: 220.000000
# a watched target: its event comes once per store, after the call
global seen
seen = 0
event create Changed, onchanged
watch create seen, Changed
for i = 1 to 2
  seen = twice(i) + 1
next
# expect: changed to 3.000000
# expect: changed to 5.000000
watch remove seen
# the end of the run inside a call: nothing after it runs
c = noisy(1) + quit(1) + noisy(2)
# expect: noisy221.000000
# expect: quit
print "not reached"
end
function twice(x)
  twice = x * 2
endfunction
function noisy(x)
  n = n + 1
  print "noisy"; n
  noisy = x + n
endfunction
function texty(x)
  texty = "t" + x
endfunction
function broken(x)
  broken = x + zz  # expect error 37, 3, 37, 3
endfunction
function noval(x)
  print "noval"
endfunction
function makeglobal(x)
  global m
  makeglobal = x * 10
endfunction
function bump(x)
  n = 100
  bump = x + 1
endfunction
function quit(x)
  print "quit"
  end
endfunction
function onchanged(v)
  print "changed to "; v
endfunction
