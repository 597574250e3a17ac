# A property sheet with several pages: a page is set up ("oninit") when it
# is first shown, its controls are found by id while the sheet runs, and
# every page that was shown gets its "onexit" when the sheet closes. Lines
# between the pages are skipped. The sheet's OK button (id 1) closes it.
# args: --ui-actions property_sheet.actions
event create "init1", InitFirst
event create "init2", InitSecond
event create "init3", InitThird
event create "exit1", ExitFirst
event create "exit2", ExitSecond
event create "exit3", ExitThird
event create "ticked", Ticked
propertysheet "Settings"
  print "never printed"
  page "General", 0, 0, 200, 100
    control edittext "", 100, 5, 5, 100, 12
    oninit init1
    onexit exit1
  endpage
  page "Advanced", 0, 0, 200, 100, 9, "Sans"
    control checkbox "Verbose", 200, 5, 5, 100, 12, "ticked"
    oninit init2
    onexit exit2
  endpage
  page "Never shown", 0, 0, 200, 100
    oninit init3
    onexit exit3
  endpage
enddialog
print "sheet closed"
end

function InitFirst(unused)
  print "init general"
  alter 100
    value "guest"
  endalter
endfunction

function InitSecond(unused)
  print "init advanced "; controlvalue(100)
endfunction

function InitThird(unused)
  print "init never"
endfunction

function Ticked(state)
  print "verbose "; state
endfunction

function ExitFirst(unused)
  print "exit general "; controlvalue(100)
endfunction

function ExitSecond(unused)
  print "exit advanced "; controlvalue(200)
endfunction

function ExitThird(unused)
  print "exit never"
endfunction
# expect: init general
# expect: init advanced root
# expect: verbose 1.000000
# expect: propertysheet "Settings"
# expect:   button 1 "OK" enabled visible
# expect:   button 2 "Cancel" enabled visible
# expect:   button 12321 "Apply" disabled visible
# expect: page 1 "Advanced"
# expect:   checkbox 200 "Verbose" checked=1 enabled visible focus
# expect: exit general root
# expect: exit advanced 1.000000
# expect: sheet closed
