# Under --sandbox, files next to the script (and below its folder) are
# still included and used as libraries.
# args: --sandbox
include "parts/chain_c.inc"   # expect: c sets depth
library "parts/shapes.inc"
print area(2, 2)              # expect: 4.000000
