# An error inside included text names the included file and its own line;
# the main file's lines after the include keep their numbers.
print "before"   # expect: before
include "parts/faulty.inc"
# expect: faulty start
# expect error 7 in parts/faulty.inc:3
# expect: faulty end
goto missing_too  # expect error 7
print "after"     # expect: after
