# An action file that expects another dialog than the one open ends the run.
# args: --ui-actions wrong_dialog.actions
# exit: 1
event create "exit", Bye
dialog "Actual", 0, 0, 100, 50
  onexit exit
enddialog
print "not reached"
end

function Bye(unused)
  print "not reached either"
endfunction
