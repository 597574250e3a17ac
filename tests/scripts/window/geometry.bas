# "pointoffset" places a point at a distance from (px, py), at a right
# angle to the direction from (x1, y1) to (x2, y2), on its left.
p = pointoffset(0, 0, 10, 0, 5, 5, 2)
print p[0]; " "; p[1]                        # expect: 5.000000 7.000000
p = pointoffset(0, 0, 0, -3, 1, 1, 2)
print p[0]; " "; p[1]                        # expect: 3.000000 1.000000
# A direction of no length gives the first point.
p = pointoffset(1, 1, 1, 1, 0, 0, 3)
print p[0]; " "; p[1]                        # expect: 1.000000 1.000000
# Fewer than seven numbers: no result and no error.
q = 4
q = q + pointoffset(1, 2, 3)
print q                                      # expect: 4.000000
# "sendmessage" is reserved and does nothing.
s = 9
s = s + sendmessage(1, 2, 3)
print s                                      # expect: 9.000000
