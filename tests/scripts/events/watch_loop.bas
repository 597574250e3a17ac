# A watched loop variable raises its event on every step of "for"/"next";
# the loop runs as it would without the watch.
event create Step, onstep
for i = 1 to 3
  if i = 1 then
    watch create i, Step
  endif
  print "body "; i
next
print "done"
# expect: body 1.000000
# expect: step 2.000000
# expect: body 2.000000
# expect: step 3.000000
# expect: body 3.000000
# expect: step 4.000000
# expect: done
end

function onstep(v)
  print "step "; v
endfunction
