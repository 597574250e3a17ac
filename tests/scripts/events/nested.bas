# A handler that raises another event waits for its handlers, then goes on
# with its own statements; the raising statement continues afterwards.
event create Outer, outer
event create Inner, inner
throw Outer(1)
print "main goes on"
# expect: outer begins 1.000000
# expect: inner 2.000000
# expect: outer ends 1.000000
# expect: main goes on
end

function outer(n)
  print "outer begins "; n
  throw Inner(n + 1)
  print "outer ends "; n
endfunction

function inner(n)
  print "inner "; n
endfunction
