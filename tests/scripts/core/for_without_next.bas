# A for whose next never comes runs its body once and the program ends.
for i = 1 to 3
  print "body"  # expect: body
