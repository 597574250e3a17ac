# Argument lists of calls nested in the arguments of other calls, of calls
# made from inside a called function, and of calls after one that was given
# too few arguments: each call sees exactly its own arguments.
print add(add(1, 2), add(add(3, 4), 5))  # expect: 15.000000
print join(left("abcdef", len(mid("xyz", 0, 2))), right("uvw", add(1, 1)))  # expect: abvw
print outer(10, 20)  # expect: 1030.000000
x = add(1)  # expect error 24
print add(7, 8)  # expect: 15.000000
print add(len("abc"), add(1, 1))  # expect: 5.000000
end
function add(a, b)
  add = a + b
endfunction
function join(p, q)
  join = p + q
endfunction
function outer(a, b)
  outer = add(a, add(b, 1000))
endfunction
