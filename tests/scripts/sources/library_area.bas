# A library's functions and subs are callable from the main program; the
# library's own main-program lines never run, and naming it twice loads it
# once (no duplicate definitions). The main program has no "end": it still
# stops before the library's text.
library "parts/shapes.inc"
library "parts/shapes.inc"
print area(3, 4)   # expect: 12.000000
call greet("area") # expect: hello area
