# Check boxes and radio buttons: a click raises the control's event with its
# new check state; "alter" sets the state with "value" or "selection", and
# "controlvalue" reads it. Radio buttons between group boxes form a group.
# args: --ui-actions buttons.actions
event create "init", SetUp
event create "exit", TearDown
event create "clicked", OnClicked
dialog "Options", 0, 0, 200, 120
  control checkbox "Bold", 10, 5, 5, 80, 12, "clicked"
  control checkbox "Italic", 11, 5, 20, 80, 12, "clicked"
  control groupbox "Size", 19, 5, 35, 100, 50
  control radiogroup "Small", 20, 10, 45, 80, 12, "clicked"
  control radiogroup "Large", 21, 10, 60, 80, 12, "clicked"
  control groupbox "Colour", 29, 110, 35, 80, 50
  control radiogroup "Red", 30, 115, 45, 60, 12
  control okbutton "OK", 1, 5, 100, 50, 14
  oninit init
  onexit exit
enddialog
end

function SetUp(unused)
  alter 11
    selection 1
  endalter
  alter 20
    value 1
  endalter
  alter 30
    value 5
  endalter
  print controlvalue(10); controlvalue(11); controlvalue(20); controlvalue(30)
endfunction
# expect: 0.0000001.0000001.0000001.000000

function OnClicked(state)
  print "clicked "; state
endfunction
# check 10 clicks it; uncheck 11 clicks it; check 10 again does nothing
# expect: clicked 1.000000
# expect: clicked 0.000000
# a click on "Large" checks it and clears "Small", but not "Red" (another group)
# expect: clicked 1.000000

function TearDown(unused)
  print controlvalue(10); controlvalue(11); controlvalue(20); controlvalue(21); controlvalue(30)
endfunction
# expect: 1.0000000.0000000.0000001.0000001.000000
