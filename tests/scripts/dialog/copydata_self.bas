# A dialog is listed by its caption while it runs. Its own script sending
# to it is answered at once (its thread cannot wait for itself), with the
# dialog as the sender; the handler's value is the answer, and a handler
# that assigns none answers 0. Once closed, the dialog is not found.
# args: --ui-actions copydata_self.actions
event create "init", Init
event create OnCopyData, Received
dialog "Self-addressed 5d2c", 0, 0, 100, 40
  control okbutton "OK", 1, 5, 5, 40, 14
  oninit init
enddialog
print getwindowhandle("Self-addressed 5d2c")   # (its output is the last line below)
x = copydata(1, 2)                               # expect error 24
end

function Init(unused)
  h = getwindowhandle("addressed 5d2c")
  print copydata(h, 4, "abc")                    # expect: code 4.000000 from itself
                                                 # expect: 43.000000
  print copydata(h, 0, "")                       # expect: code 0.000000 from itself
                                                 # expect: 0.000000
  print getwindowhandle("self-addressed 5d2c")   # expect: 0.000000
endfunction

function Received(number, words, sender)
  if sender = getwindowhandle("Self-addressed 5d2c") then
    print "code "; number; " from itself"
  endif
  if number > 0 then
    Received = number * 10 + len(words)
  endif
endfunction
# the main program after the dialog has closed:
# expect: 0.000000
