# List boxes and combo boxes: "value" fills them and selects the first item,
# a single unset value empties them, "selection" takes an index or a text
# (the first item starting with it, ignoring case); "controlvalue" reads the
# selected text. A person's selection raises the control's event with the
# item's text; a multi-selection list reads as the item last clicked.
# args: --ui-actions lists.actions
event create "init", SetUp
event create "picked", OnPicked
event create "exit", TearDown
dialog "Lists", 0, 0, 200, 150
  control listbox "", 10, 5, 5, 80, 60, "picked"
  control combobox "", 20, 100, 5, 80, 60, "picked"
  control multilistbox "", 30, 5, 70, 80, 60, "picked"
  control listbox "", 40, 100, 70, 80, 60
  oninit init
  onexit exit
enddialog
end

function SetUp(unused)
  dim fruit[3]
  fruit[0] = "apple"
  fruit[1] = "banana"
  fruit[2] = "cherry"
  alter 10
    value fruit
  endalter
  print "list "; controlvalue(10)              
  alter 10
    selection 2
  endalter
  print "list "; controlvalue(10)
  alter 10
    selection "BAN"
  endalter
  print "list "; controlvalue(10)
  alter 20
    value fruit
  endalter
  print "combo "; controlvalue(20)
  alter 20
    selection "ch"
  endalter
  print "combo "; controlvalue(20)
  alter 30
    value fruit
  endalter
  alter 40
    value "only"
  endalter
  print "single "; controlvalue(40)
  dim nothing
  alter 40
    value nothing
  endalter
  print "emptied ["; controlvalue(40); "]"
endfunction
# expect: list apple
# expect: list cherry
# expect: list banana
# expect: combo apple
# expect: combo cherry
# expect: single only
# expect: emptied []

function OnPicked(item)
  print "picked "; item
endfunction
# expect: picked cherry
# expect: picked banana
# expect: picked apple
# expect: picked cherry
# expect: dialog "Lists"
# expect:   listbox 10 "" items=["apple", "banana", "cherry"] selected="cherry" enabled visible focus
# expect:   combobox 20 "banana" items=["apple", "banana", "cherry"] selected="banana" enabled visible
# expect:   multilistbox 30 "" items=["apple", "banana", "cherry"] selected=["apple", "cherry"] enabled visible
# expect:   listbox 40 "" items=[] selected=none enabled visible

function TearDown(unused)
  print controlvalue(10); " "; controlvalue(20); " "; controlvalue(30)
endfunction
# expect: cherry banana cherry
