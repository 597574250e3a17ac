print ubound("ARGV")
for i = 0 to ubound("ARGV") - 1
  print ARGV[i]
next
