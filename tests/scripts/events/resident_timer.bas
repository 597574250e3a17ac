# A resident script's timer keeps ticking after the main program; once its
# handler stops the timer nothing can run any more, and the runner ends.
global n
n = 0
event create OnTimer, tick
timerstart 20
stayresident
print "main done"  # expect: main done
end
# expect: tick 1.000000
# expect: tick 2.000000
# expect: tick 3.000000

function tick(unset)
  n = n + 1
  print "tick "; n
  if n = 3 then
    timerstop
  endif
endfunction
