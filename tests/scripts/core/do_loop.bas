# do while/loop: the condition is read again on every pass.
x = 0
do while x < 3
  print x  # expect: 0.000000
  # expect: 1.000000
  # expect: 2.000000
  x = x + 1
loop
print "after"  # expect: after
# a false condition skips the body, nested loops included
do while x < 0
  do while x < 100
    print "wrong inner"
  loop
  print "wrong body"
loop
print x  # expect: 3.000000
# nested do inside for
for i = 1 to 2
  y = 0
  do while y < 2
    y = y + 1
  loop
  print i; y  # expect: 1.0000002.000000
  # expect: 2.0000002.000000
next
DO WHILE x > 1
  x = x - 1
LOOP
print x  # expect: 1.000000
# "while" is required after "do"
do  # expect error 1, 54
# a loop with nothing to go back to does nothing
loop
print "end"  # expect: end
