# Tree views, tab controls, sliders and date pickers. A tree takes one
# top-level item per parameter with the rest of each parameter as its
# children; tabs take one tab per item. Tree, tab and slider read as their
# window text; their selections reach the script through events (tree: the
# item's text, tab: its index). A date picker takes and gives day, month,
# year, hour, minute, second.
# args: --ui-actions tree_tab_slider_date.actions
event create "init", SetUp
event create "chosen", OnChosen
event create "exit", TearDown
dialog "Kinds", 0, 0, 250, 200
  control treeview "", 10, 5, 5, 100, 80, "chosen"
  control tabcontrol "tabs", 20, 110, 5, 130, 20, "chosen"
  control sliderhorz "", 30, 110, 30, 130, 20
  control slidervert "", 31, 110, 30, 20, 130
  control datetime "", 40, 110, 60, 130, 14
  oninit init
  onexit exit
enddialog
end

function SetUp(unused)
  dim fruit[3]
  fruit[0] = "fruit"
  fruit[1] = "apple"
  fruit[2] = "pear"
  dim veg[3]
  veg[0] = "veg"
  veg[1] = "leek"
  veg[2] = "kale"
  alter 10
    value fruit, veg
  endalter
  print "tree ["; controlvalue(10); "]"
  dim names[3]
  names[0] = "One"
  names[1] = "Two"
  names[2] = "Three"
  alter 20
    value names
    selection 2
  endalter
  print "tab ["; controlvalue(20); "]"
  alter 30
    value 40
  endalter
  print "slider ["; controlvalue(30); "]"
  dim when[6]
  when[0] = 23
  when[1] = 11
  when[2] = 2026
  when[3] = 9
  when[4] = 30
  when[5] = 15
  alter 40
    value when
  endalter
  d = controlvalue(40)
  print d[0]; " "; d[1]; " "; d[2]; " "; d[3]; " "; d[4]; " "; d[5]
endfunction
# The tree's window text becomes its first parameter's value: the item at
# the variable's current index, the one assigned last.
# expect: tree [pear]
# expect: tab [tabs]
# expect: slider []
# expect: 23.000000 11.000000 2026.000000 9.000000 30.000000 15.000000
# expect: dialog "Kinds"
# expect:   treeview 10 "pear" items=["fruit", ">apple", ">pear", "veg", ">leek", ">kale"] selected=none enabled visible focus
# expect:   tabcontrol 20 "tabs" tabs=["One", "Two", "Three"] selected="Three" enabled visible
# expect:   slider 30 "" position=40 range=0..100 enabled visible
# expect:   slider 31 "" position=0 range=0..100 enabled visible
# expect:   datetime 40 "" value=2026-11-23 09:30:15 enabled visible

function OnChosen(what)
  print "chosen "; what
endfunction
# expect: chosen leek
# expect: chosen 0.000000
# expect: dialog "Kinds"
# expect:   treeview 10 "pear" items=["fruit", ">apple", ">pear", "veg", ">leek", ">kale"] selected="leek" enabled visible focus
# expect:   tabcontrol 20 "tabs" tabs=["One", "Two", "Three"] selected="One" enabled visible
# expect:   slider 30 "" position=75 range=0..100 enabled visible
# expect:   slider 31 "" position=100 range=0..100 enabled visible
# expect:   datetime 40 "" value=2027-02-01 08:05:00 enabled visible

function TearDown(unused)
  d = controlvalue(40)
  print d[0]; " "; d[1]; " "; d[2]
endfunction
# expect: 1.000000 2.000000 2027.000000
