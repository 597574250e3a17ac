# A file that cannot be read stops the load at the line that names it.
# exit: 2
print "never printed"
include "parts/no_such_file.inc"   # expect error 47
