# Recursive calls: fib(24).
print fib(24)
end

function fib(n)
  if n < 2 then
    fib = n
    return
  endif
  fib = fib(n - 1) + fib(n - 2)
endfunction
