# Three files deep: each include line is replaced by the file's text, and a
# name is looked up in the folder of the file that names it. Lines after an
# include keep their own numbers.
print "main start"   # expect: main start
include "parts/chain_b.inc"
# expect: b before c
# expect: c sets depth
# expect: b after c
print "depth"; depth   # expect: depth3.000000
call chained("x")      # expect: chained x
goto nowhere           # expect error 7
end
INCLUDE "parts/chain_funcs.inc"   # a function defined in an included file
