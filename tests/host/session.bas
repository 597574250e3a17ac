# Run by session_host.c: finds the host's receiver and sends it text.
h = getwindowhandle("receiver")
if h > 0 then
  print "found the host window"
endif
answer = copydata(h, 7, "grüße, world")
print answer
print copydata(h + 1, 7, "nobody")
