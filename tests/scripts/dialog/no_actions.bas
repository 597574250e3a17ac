# With no action file a dialog is cancelled at once (a note on stderr says
# so): its "onexit" runs and the script goes on after the block.
event create "bye", Bye
dialog "Nobody here", 0, 0, 100, 50
  control okbutton "OK", 1, 5, 5, 50, 14
  onexit bye
enddialog
print "went on"
end

function Bye(unused)
  print "exit"
endfunction
# expect: exit
# expect: went on
