x = 2
if x >= 1 then
  print "big"
endif
