# A line that begins with a function call is no statement ("call" is needed)
# and ends the run.
print "one"  # expect: one
f(1)  # expect error 18
print "never"
end
function f(n)
  f = n
endfunction
