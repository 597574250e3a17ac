# The script run by the example host (host.c): it attaches handlers to a
# host event and to its timer, and stays resident.
global ticks
ticks = 0
event create HostEvent, onhostevent
event create OnTimer, ontick
event create Broken, onbroken
call hostlog("started", hostgreeting())
timerstart 100
stayresident
end

function onhostevent(number, word)
  call hostlog("event", number, word)
endfunction

function ontick(unused)
  ticks = ticks + 1
  if ticks = 3 then
    call hostlog("three ticks")
    timerstop
  endif
endfunction

function onbroken()
  call nosuchfunction()
endfunction
