# An action naming a control the dialog lacks is reported with the action
# file's name and line; the dialog is cancelled and the run ends (status 1).
# args: --ui-actions missing_control.actions
# exit: 1
dialog "Form", 0, 0, 100, 50
  control edittext "", 100, 5, 5, 50, 14
enddialog
print "not reached"
