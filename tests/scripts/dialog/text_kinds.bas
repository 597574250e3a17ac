# Edit fields, static texts, bitmaps and group boxes. A number field takes
# only the digits a person types; a multi-line field reports typing but not
# text set by "alter"; a single-line field reports both. Static texts and
# bitmaps read as their text, a group box (a kind of button) as its check
# state, 0.
# args: --ui-actions text_kinds.actions
event create "init", SetUp
event create "changed", Changed
event create "exit", TearDown
dialog "Texts", 0, 0, 200, 150
  control editnumber "", 10, 5, 5, 80, 12, "changed"
  control editmultiline "", 20, 5, 20, 80, 40, "changed"
  control statictext "Label", 30, 5, 65, 80, 12
  control bitmap "picture", 40, 5, 80, 20, 20
  control groupbox "Group", 50, 100, 5, 90, 90
  oninit init
  onexit exit
enddialog
end

function SetUp(unused)
  alter 20
    value "set, not reported"
  endalter
  alter 30
    value "New label"
  endalter
  alter 40
    title "other picture"
  endalter
  print controlvalue(20); "|"; controlvalue(30); "|"; controlvalue(40); "|"; controlvalue(50)
endfunction
# expect: set, not reported|New label|other picture|0.000000

function Changed(what)
  print "changed "; what
endfunction
# expect: changed 2026
# expect: changed typed

function TearDown(unused)
  print "["; controlvalue(10); "]"
endfunction
# expect: [2026]
