# An error inside a library function names the library file and its line.
library "parts/broken_lib.inc"
print "start"     # expect: start
call broken()
# expect error 7 in parts/broken_lib.inc:3
print "end"       # expect: end
