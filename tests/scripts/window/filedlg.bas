# The file dialogs give the chosen full path, "" when cancelled. A relative
# name is taken from the initial folder; a name without an extension gets
# the default one; Enter takes the initial file name.
# args: --ui-actions filedlg.actions
f = fileopendlg("", "", "Programs|*")
print f                                            # expect: /bin/sh
f = fileopendlg("sh", "", "All files|*.*", "/bin")
# expect: fileopen "sh" extension "" filter "All files|*.*" folder "/bin"
print f                                            # expect: /bin/sh
f = filesaveasdlg("report", "txt", "Text|*.txt", "/tmp")
print f                                            # expect: /tmp/report.txt
f = filesaveasdlg("x", ".csv", "CSV|*.csv")
print f                                            # expect: /tmp/data.csv
f = fileopendlg("a.txt", "txt", "Text|*.txt")
print len(f)                                       # expect: 0
f = filesaveasdlg("a.txt", "txt", "Text|*.txt")
print len(f)                                       # expect: 0
f = fileopendlg("", "txt")                         # expect error 24
f = filesaveasdlg()                                # expect error 24
print "end"                                        # expect: end
