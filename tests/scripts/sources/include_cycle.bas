# A file that comes back to itself through another is refused before
# anything runs, at the include that closes the circle.
# exit: 2
# expect error 111 in parts/cycle_b.inc:2
print "never printed"
include "parts/cycle_a.inc"
