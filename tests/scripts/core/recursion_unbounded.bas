# A recursion without end is stopped with error 13 and the script goes on.
print "before"  # expect: before
x = forever(1)
print "after"  # expect: after
print forever(1)
# expect: 
print "again"  # expect: again
end
function forever(n)
  forever = forever(n + 1)  # expect error 13, 13
endfunction
