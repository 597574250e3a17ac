print ubound("ARGV")
