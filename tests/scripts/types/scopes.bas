# "dim v as T" makes a record local to the scope level; "global v as T" makes
# one visible everywhere under its name as written.
type Pair
  a as integer
  b as double
endtype
global G as Pair
dim loc as Pair
print loc.b  # expect: 0.000000
x = probe()
x = probelocal()
# the global is found only with the spelling of its declaration
y = g.b  # expect error 37
end
function probe()
  print G.b  # expect: 0.000000
  dim inner as Pair
  print inner.a  # expect: 0
  probe = 1
endfunction
function probelocal()
  # a record of the main program is not visible in a function
  y = loc.a  # expect error 37
  probelocal = 1
endfunction
