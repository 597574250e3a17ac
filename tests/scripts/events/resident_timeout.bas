# A timer that never stops keeps a resident script alive until the resident
# timeout.
# args: --resident-timeout=0.3
global n
n = 0
event create OnTimer, tick
event create OnStop, stopped
timerstart 20
stayresident
end
# expect: stopped
# expect: first tick

function tick(unset)
  n = n + 1
  if n = 1 then
    print "first tick"
  endif
endfunction

function stopped(path)
  print "stopped"
endfunction
