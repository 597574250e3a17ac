# Script functions and subs: parameters by value, results by the function's
# own name, recursion through scope levels.
print add(2, 3)  # expect: 5.000000
print fact(10)  # expect: 3628800.000000
print fib(15)  # expect: 610.000000
# surplus arguments are ignored; missing ones are error 24
print add(1, 2, 3)  # expect: 3.000000
x = add(1)  # expect error 24
# a sub in an expression has no value; "call" discards it
call greet("call")  # expect: hello call
y = greet("expr")  # expect error 19
# expect: hello expr
# names are matched in lower case
print TWICE(4)  # expect: 8.000000
# parameters are copies
v = 1
call bump(v)
print v  # expect: 1.000000
# arrays are passed whole
dim arr[3]
arr[2] = 5
print pick(arr)  # expect: 5.000000
# a return statement ends the body
print early(1)  # expect: 1.000000
# errors around calls
z = nosuch()  # expect error 21
call 5  # expect error 1
call nohead()  # expect error 23
# a definition met in the flow is an error; the line after it runs on
print "before end"  # expect: before end
end
function add(a, b)
  add = a + b
endfunction
function fact(n)
  if n <= 1 then
    fact = 1
  else
    fact = n * fact(n - 1)
  endif
endfunction
function fib(n)
  if n < 2 then
    fib = n
  else
    fib = fib(n - 1) + fib(n - 2)
  endif
endfunction
sub greet(who)
  print "hello "; who
endsub
Function Twice(n)
  twice = n * 2
EndFunction
sub bump(p)
  p = p + 1
endsub
function pick(list)
  pick = list[2]
endfunction
function early(n)
  early = n
  return
  early = 99
endfunction
sub nohead
endsub
