# Malformed dialogs report the errors named for them and the run goes on
# after their blocks: too few parameters, a control keyword that names no
# control, a control line with a non-keyword type; "closedialog" with no
# dialog running; a sheet without pages shows nothing. Out-of-range
# coordinates and very long texts are no error.
# args: --ui-actions hostile.actions
dialog "Too few", 0, 0, 10                      # expect error 1
  control okbutton "OK", 1, 5, 5, 50, 14
enddialog
print "one"                                     # expect: one
dialog "Bad control", 0, 0, 100, 50
  control font "x", 1, 2, 3, 4, 5               # expect error 41, 1
enddialog
print "two"                                     # expect: two
dialog "Bad type", 0, 0, 100, 50
  control 5 "x", 1, 2, 3, 4, 5                  # expect error 1, 1
enddialog
print "three"                                   # expect: three
dialog "Short line", 0, 0, 100, 50
  control button "x", 1, 2, 3                   # expect error 1, 1
enddialog
dialog "No name", 0, 0, 100, 50
  oninit                                        # expect error 1
enddialog
closedialog                                     # expect error 43
propertysheet "Empty"
enddialog
print "four"                                    # expect: four
long = repeat("x", 10000)
dialog long, 70000, -70000, 1e300, -1e300
  control edittext long, 123456, 99999, -99999, 1e20, 0, "e"
enddialog
print "five"                                    # expect: five
dialog "Left open", 0, 0, 100, 50
  control okbutton "OK", 1, 5, 5, 50, 14
