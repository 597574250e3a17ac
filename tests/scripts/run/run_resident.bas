# "run" runs another script to its end and destroys it, even when it stayed
# resident: its handlers and timer are gone, its variables are not visible.
# args: --event 'Ping,1' --resident-timeout=0.1
event create Ping, onping
run "run/inner_resident.bas"  # expect: inner ran
print "back"  # expect: back
stayresident
end
# expect: outer got ping

function onping(a)
  print "outer got ping"
endfunction
