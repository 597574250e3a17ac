do while 1
if x then
for i = 1 to 3
function f(
x = f(1,2,
"