x = 1
if x = 2 then
  print "two"
print "done"
