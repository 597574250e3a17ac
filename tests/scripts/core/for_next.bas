# for/next: step 1, limit read once, body skipped when the limit is below the start.
for i = 1 to 3
  print i  # expect: 1.000000
  # expect: 2.000000
  # expect: 3.000000
next
print i  # expect: 4.000000
# a limit below the start skips the body, nested pairs included
for i = 5 to 1
  for j = 1 to 2
    print "wrong inner"
  next
  print "wrong body"
next
print i  # expect: 5.000000
# the limit is evaluated once
n = 2
for i = 1 to n
  n = 10
  print "pass"  # expect: pass
  # expect: pass
next
# nested loops
for i = 1 to 2
  for j = 1 to 2
    print i; " "; j  # expect: 1.000000 1.000000
    # expect: 1.000000 2.000000
    # expect: 2.000000 1.000000
    # expect: 2.000000 2.000000
  next
next
# equal start and limit runs once
for k = 7 to 7
  print "once"  # expect: once
next
print k  # expect: 8.000000
# fractional bounds keep the fraction
for k = 0.5 to 2
  print k  # expect: 0.500000
  # expect: 1.500000
next
# malformed headers: no "to", no "=", no variable
for i = 1  # expect error 10
for i to  # expect error 4
for  # expect error 4
# a next without a loop
next  # expect error 55
print "end"  # expect: end
