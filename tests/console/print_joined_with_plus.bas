x = 3
print "total: " + x
