# A first OrvoBasic script: variables, arrays, loops, conditions and a function.
print "Hello from OrvoBasic!"

dim squares[5]
for i = 0 to 4
  squares[i] = i * i
next
print "4 squared is "; squares[4]

total = 0
n = 1
do while n <= 10
  total = total + n
  n = n + 1
loop
print "1 + 2 + ... + 10 = "; total

if total => 50 then
  print "that is at least fifty"
else
  print "that is less than fifty"
endif

print "5! = "; factorial(5)
end

function factorial(k)
  if k < 2 then
    factorial = 1
    return
  endif
  factorial = k * factorial(k - 1)
endfunction
