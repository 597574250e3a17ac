# With dialogs denied, "dialog", "propertysheet" and "alter" report error
# 40 and skip their whole blocks; "controlvalue" is an unknown function.
# args: --deny=dialogs
print "start"                                   # expect: start
dialog "Denied", 0, 0, 100, 50                  # expect error 40
  control okbutton "OK", 1, 5, 5, 50, 14
  print "inside"
enddialog
print "after dialog"                            # expect: after dialog
propertysheet "Denied"                          # expect error 40
  page "P", 0, 0, 10, 10
  endpage
enddialog
alter 5                                         # expect error 40
  value "x"
endalter
closedialog                                     # expect error 40
x = controlvalue(5)                             # expect error 21
print "end"                                     # expect: end
