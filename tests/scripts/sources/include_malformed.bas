# An include must name its file as a string literal.
# exit: 2
print "never printed"
include parts/chain_c.inc   # expect error 1
