# The same library from a second script, next to functions of its own; a
# library may name another library, whose functions are callable too.
library "parts/shapes.inc"
print perimeter(3, 4)   # expect: 14.000000
print twice(area(1, 5)) # expect: 10.000000
print unit()            # expect: cm
end
function twice(v)
twice = v * 2
endfunction
