# A watched variable raises its event with itself as the argument whenever it
# is written; "watch remove" ends that.
global x
x = 1
event create Changed, onchanged
watch create x, Changed
x = 5  # expect: changed to 5.000000
x = x + 1  # expect: changed to 6.000000
print "between"  # expect: between
watch remove x
x = 7
print x  # expect: 7.000000
end

function onchanged(v)
  print "changed to "; v
endfunction
