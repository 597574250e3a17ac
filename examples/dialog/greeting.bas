# A dialog with an edit field and an OK button. "oninit" fills the field
# with a suggestion; when OK is pressed the window closes, "onexit" reads
# what was typed and writes it to name.txt; then the script goes on after
# "enddialog".
#
# Without a display, run it with the actions of a person written down:
#   orvobasic --ui-actions greeting.actions greeting.bas
# args: --ui-actions greeting.actions
event create "FillName", FillName
event create "SaveName", SaveName

dialog "Your name", 10, 10, 170, 64
  control statictext "Name:", 10, 12, 12, 30, 12
  control edittext "", 100, 45, 10, 115, 14
  control okbutton "OK", 1, 60, 40, 50, 14
  oninit FillName
  onexit SaveName
enddialog

open "name.txt" for input as 1 text
line = readline(1)
close 1
print "Saved: "; left(line, len(line) - 2)
end

# Runs when the dialog has been set up.
function FillName(unused)
  alter 100
    value "Anonymous"
  endalter
endfunction

# Runs when the dialog window goes, while its controls can still be read.
function SaveName(unused)
  name = controlvalue(100)
  open "name.txt" for output as 1 text
  x = writeline(1, name)
  close 1
endfunction

# What a test of this example expects:
# expect: dialog "Your name"
# expect:   static 10 "Name:" enabled visible
# expect:   edit 100 "Anonymous" enabled visible focus
# expect:   button 1 "OK" enabled visible
# expect: Saved: Ada Lovelace
# expect-file name.txt: Ada Lovelace
