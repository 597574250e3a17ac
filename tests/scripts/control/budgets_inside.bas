# A script well inside tight budgets runs as it does without them.
# args: --max-steps=2000 --timeout=60 --max-depth=20 --max-cells=200
dim a[100]
for i = 0 to 99
  a[i] = i * 2
next
print a[99]; " "; f(10)  # expect: 198.000000 55.000000
end
function f(n)
  if n < 1 then
    f = 0
    return
  endif
  f = n + f(n - 1)
endfunction
