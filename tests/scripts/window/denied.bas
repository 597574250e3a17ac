# With dialogs and sound denied the prompts are unknown functions and
# "playsound" an unsupported keyword; the geometry needs nothing.
# args: --deny=dialogs --deny=sound
a = ask("sure?")                            # expect error 21
m = popupmenu(0, 0, "x")                    # expect error 21
f = fileopendlg("", "", "")                 # expect error 21
f = filesaveasdlg("", "", "")               # expect error 21
playsound "a.wav"                           # expect error 40
p = pointoffset(0, 0, 10, 0, 5, 5, 2)
print p[1]                                  # expect: 7.000000
