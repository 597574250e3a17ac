# "oninit" runs once the dialog is set up, control events while it runs and
# "onexit" when its window goes, its controls still readable; OK and Cancel
# both close it. Other lines in the block are skipped, and a control with
# id 1 raises its own event before it ends the dialog.
# args: --ui-actions events_order.actions
event create "init", SetUp
event create "exit", TearDown
event create "typed", OnTyped
event create "pressed", OnPressed
print "before"                                          # expect: before
dialog "First", 0, 0, 200, 100
  control edittext "start", 100, 5, 5, 100, 12, "typed"
  print "never printed"
  control button "Press", 200, 5, 20, 50, 14, "pressed"
  control okbutton "OK", 77, 5, 40, 50, 14, "pressed"
  control cancelbutton "Cancel", 78, 60, 40, 50, 14
  oninit init
  onexit exit
enddialog
print "after first"
# Setting an edit field's text reports the change, as typing does.
# expect: typed hello
# expect: init hello
# expect: typed abc
# expect: pressed 0.000000
# expect: pressed 0.000000
# expect: exit abc
# expect: after first
dialog "Second", 0, 0, 200, 100
  control edittext "second", 100, 5, 5, 100, 12
  control cancelbutton "Cancel", 0, 60, 40, 50, 14
  onexit exit
enddialog
print "after second"
# expect: exit second
# expect: after second
end

function SetUp(unused)
  alter 100
    value "hello"
  endalter
  print "init "; controlvalue(100)
endfunction

function TearDown(unused)
  print "exit "; controlvalue(100)
endfunction

function OnTyped(what)
  print "typed "; what
endfunction

function OnPressed(state)
  print "pressed "; state
endfunction
