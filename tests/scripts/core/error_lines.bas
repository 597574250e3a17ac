# An error is reported on the line where the failing statement began, also
# after skipped blocks, in loops that jump back and inside function bodies.
if 1 = 2 then
  print "skipped"
endif y  # expect error 3
for i = 1 to 2
  z = nosuch  # expect error 37, 3, 37, 3
next
k = 0
do while k < 2
  k = k + 1
  w = nothere  # expect error 37, 3, 37, 3
loop
call fails()
q = 1 + nowhere  # expect error 37, 3
end
sub fails()

  v = novar  # expect error 37, 3
endsub
