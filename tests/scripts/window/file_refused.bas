# The open dialog takes only a file that exists: choosing another is a
# failed action, which ends the run.
# args: --ui-actions file_refused.actions
# exit: 1
f = fileopendlg("", "txt", "Text|*.txt")
print "not reached"
