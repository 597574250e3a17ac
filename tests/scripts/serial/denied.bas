# With serial ports denied the built-ins are unknown names and open nothing.
# args: --deny=serial
x = comportopen(1, 9600)                # expect error 21
x = comportread(1)                      # expect error 21
print "after"                           # expect: after
