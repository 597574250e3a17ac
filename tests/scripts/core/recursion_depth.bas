# Deep recursion works; each level has its own locals.
print depth(10000)  # expect: 10000.000000
print sum(2000)  # expect: 2001000.000000
end
function depth(n)
  if n = 0 then
    depth = 0
  else
    depth = depth(n - 1) + 1
  endif
endfunction
function sum(n)
  if n = 0 then
    sum = 0
  else
    sum = n + sum(n - 1)
  endif
endfunction
