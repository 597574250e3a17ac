# "alter" also enables, shows, retitles and sets fonts; "enable" and "show"
# take only 0 or 1; unknown ids are error 44 (and the block is skipped);
# "setfocus" and "controlvalue" with an unknown id fail without a message.
# After the dialog has closed nothing is found any more.
# args: --ui-actions alter_misc.actions
event create "init", SetUp
dialog "Alter", 0, 0, 200, 100
  control edittext "a", 100, 5, 5, 100, 12
  control button "B", 200, 5, 20, 50, 14
  control statictext "label", 300, 5, 40, 50, 14
  oninit init
enddialog
alter 100                                       # expect error 44
  value "closed"
endalter
print "after: ["; controlvalue(100); "]"
x = controlvalue()                              # expect error 24
end

function SetUp(unused)
  alter 100
    enable 0
    text "ignored"
    title "retitled"
    font "Serif", 12, "BOLD", "HEAVY", "ITALIC"
  endalter
  alter 200
    show 0
  endalter
  alter 300
    font "Mono"                                 # expect error 24
  endalter
  alter 300
    enable 2                                    # expect error 45
  endalter
  alter 999                                     # expect error 44
    value "x"
  endalter
  setfocus 300
  setfocus 999
  print "["; controlvalue(999); "]"
endfunction
# expect: []
# expect: dialog "Alter"
# expect:   edit 100 "retitled" font="Serif",-12,900,italic disabled visible
# expect:   button 200 "B" enabled hidden
# expect:   static 300 "label" enabled visible focus
# expect: after: []
