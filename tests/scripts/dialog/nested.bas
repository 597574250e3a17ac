# A button's event opens a second dialog inside the first one's modal loop;
# "closedialog" in the inner dialog's event ends only the inner dialog, and
# "controlvalue" finds the controls of the innermost dialog.
# args: --ui-actions nested.actions
event create "open", OpenInner
event create "done", Done
event create "outerexit", OuterExit
dialog "Outer", 0, 0, 200, 100
  control edittext "outer text", 100, 5, 5, 100, 12
  control button "More...", 200, 5, 20, 50, 14, "open"
  onexit outerexit
enddialog
print "end"
end

function OpenInner(unused)
  print "opening inner"
  dialog "Inner", 10, 10, 150, 60
    control edittext "inner text", 100, 5, 5, 100, 12
    control button "Done", 300, 5, 20, 50, 14, "done"
  enddialog
  print "inner closed, outer has "; controlvalue(100)
endfunction

function Done(unused)
  print "inner has "; controlvalue(100)
  closedialog
endfunction

function OuterExit(unused)
  print "outer exit"
endfunction
# expect: opening inner
# expect: inner has inner text
# expect: inner closed, outer has outer text
# expect: outer exit
# expect: end
