# "ask" is a Yes/No box (the runner prints its text): 1 for Yes, 0 for No
# or when it is closed. With no action left it is closed, as a dialog is.
# args: --ui-actions ask.actions
a = ask("Save changes?")  # expect: Save changes?
# the snapshot of the question:
# expect: question "Save changes?"
print a                   # expect: 1
a = ask("Really?")        # expect: Really?
print a                   # expect: 0
a = ask(42)               # expect: 42.000000
print a                   # expect: 0
a = ask("Anyone?")        # expect: Anyone?
print a                   # expect: 0
a = ask()                 # expect error 24
print "end"               # expect: end
