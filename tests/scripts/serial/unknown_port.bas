# A port number that was never opened: reads and writes give "" (a string,
# not false), closing gives false; missing arguments are error 24.
r = comportread(5)
print len(r)                            # expect: 0
w = comportwrite(5, "hello")
print len(w)                            # expect: 0
print comportclose(5)                   # expect: False
x = comportopen()                       # expect error 24
x = comportwrite(5)                     # expect error 24
x = comportclose()                      # expect error 24
print "still running"                   # expect: still running
# the same after a port was opened and closed
x = comportopen(6)
print comportclose(6)                   # expect: True
print len(comportread(6))               # expect: 0
print len(comportwrite(6, "x"))         # expect: 0
