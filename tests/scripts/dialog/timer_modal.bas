# Script timers keep firing while a dialog waits in its modal loop; a timer
# handler that executes "closedialog" ends the dialog, which cuts the wait
# short.
# args: --ui-actions timer_modal.actions
global ticks
ticks = 0
event create "OnTimer", Tick
timerstart 20
dialog "Waiting", 0, 0, 100, 50
  control statictext "Please wait", 10, 5, 5, 80, 12
enddialog
timerstop
print "ticks "; ticks
end

function Tick(unused)
  ticks = ticks + 1
  if ticks = 3 then
    closedialog
  endif
endfunction
# expect: ticks 3.000000
