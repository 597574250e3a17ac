# Opens a dialog that waits for one copy-data message; the handler prints
# what arrived, answers, and closes the dialog.
event create OnCopyData, received
dialog "Session receiver 1", 10, 10, 120, 40
  control button "OK", 1, 10, 10, 40, 14
enddialog
print "closed"
end

function received(number, words, sender)
  msg = "code " + str(number)
  print msg
  msg = "text " + words
  print msg
  received = number * 1000 + len(words)
  closedialog
endfunction
