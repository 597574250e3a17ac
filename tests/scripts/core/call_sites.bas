# One call site reached many times: parameters named like globals, results
# found through a global made between calls, too few arguments at a site
# that ran before, and errors inside a body at a site that is reached again.
# a parameter spelled like a global is that global: every level writes it
global Depth
Depth = 100
print walk(3)  # expect: 0.000000
print Depth  # expect: 0.000000
# another spelling is a local of the level and leaves the global alone
print climb(3)  # expect: 6.000000
print Depth  # expect: 0.000000
# the value is the local bearing the function's name, until a global of
# that spelling exists: then the body writes the global and the call reads it
for k = 1 to 2
  if k = 2 then
    global sq
  endif
  print sq(k + 2)  # expect: 9.000000
next
# expect: 16.000000
print sq  # expect: 16.000000
# the same site with enough and too few arguments in turn
for k = 1 to 4
  if k = 2 then
    print pair(k)  # expect error 24
  else
    print pair(k, k)  # expect: 2.000000
  endif
next
# expect:
# expect: 6.000000
# expect: 8.000000
# an error inside the body at one call does not change the next
for k = 1 to 3
  print risky(k)  # expect: 1.000000
next
# expect:
# expect: 3.000000
# a sub called with another spelling of its name
call Shout("x")  # expect: x!
call SHOUT("y")  # expect: y!
end
function walk(Depth)
  if Depth > 0 then
    walk = walk(Depth - 1) + Depth
  else
    walk = 0
  endif
endfunction
function climb(depth)
  if depth > 0 then
    climb = climb(depth - 1) + depth
  else
    climb = 0
  endif
endfunction
function sq(n)
  sq = n * n
endfunction
function pair(a, b)
  pair = a + b
endfunction
function risky(n)
  risky = n
  if n = 2 then
    risky = nosuch(n)  # expect error 21, 3
  endif
endfunction
sub shout(s)
  print s; "!"
endsub
