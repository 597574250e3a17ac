# rand(x) gives an integer from 0 to x.
bad = 0
for i = 1 to 300
  r = rand(10)
  if r < 0 then
    bad = bad + 1
  endif
  if r > 10 then
    bad = bad + 1
  endif
  if instr(str(r), ".") <> -1 then
    bad = bad + 1
  endif
next
print bad  # expect: 0.000000
print rand(0)  # expect: 0
