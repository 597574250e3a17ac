# Finds the receiver's dialog by a part of its title and sends it text.
h = getwindowhandle("receiver 1")
if h > 0 then
  print "found"
endif
line = "none " + str(getwindowhandle("no such window"))
print line
line = "answer " + str(copydata(h, 7, "héllo"))
print line
