# Parameters declared without "byval" are passed by reference: what the
# callee writes comes back into arguments written as a bare variable name,
# and only into those.
declare sub ob_swap lib "obtest" (x as integer, y as integer)
declare sub ob_scale lib "obtest" (v as float, byval k as float)
declare sub ob_scale_double lib "obtest" alias "ob_scale" (v as double, byval k as double)
declare sub ob_next_char lib "obtest" (c as char)
declare function ob_split lib "obtest" (byval x as float, whole as integer, fraction as float) as integer
a = 1
b = 5
call ob_swap(a, b)
print a; " "; b  # expect: 5 1
# an expression gets nothing back
call ob_swap(a + 0, b)
print a; " "; b  # expect: 5 5
x = 2
call ob_scale(x, 1.5)
print x  # expect: 3.000000
call ob_scale_double(x, 0.5)
print x  # expect: 1.500000
c = 65
call ob_next_char(c)
print c  # expect: 66
w = 0
f = 0
r = ob_split(2.75, w, f)
print r; " "; w; " "; f  # expect: 1 2 0.750000
# array elements and parenthesised names are expressions
dim arr[2]
arr[1] = 7
call ob_swap(arr[1], w)
print arr[1]; " "; w  # expect: 7.000000 7
# locals of a script function get their results back too
call swaplocal(3, 4)
end

sub swaplocal(p, q)
  call ob_swap(p, q)
  print p; " "; q  # expect: 4 3
endsub
