# A handler that writes the variable it watches raises its own event again;
# the nesting is bounded: error 13 once, then the script goes on.
global x
x = 0
event create Changed, onchanged
watch create x, Changed
x = 1
print "goes on"  # expect: goes on
end

function onchanged(v)
  x = x + 1  # expect error 13
endfunction
