# The clock built-ins read the local time and give integers in range.
y = year()
if y < 2000 then
  print "bad year"
endif
m = month()
if m < 1 then
  print "bad month"
endif
if m > 12 then
  print "bad month"
endif
d = day()
if d < 1 then
  print "bad day"
endif
if d > 31 then
  print "bad day"
endif
h = hour()
if h > 23 then
  print "bad hour"
endif
mi = minute()
if mi > 59 then
  print "bad minute"
endif
s = second()
if s > 59 then
  print "bad second"
endif
w = weekday()
if w < 1 then
  print "bad weekday"
endif
if w > 7 then
  print "bad weekday"
endif
# integers: no decimals when printed
print instr(str(year()), ".")  # expect: -1
# arguments are evaluated and ignored
print instr(str(hour(1, "x")), ".")  # expect: -1
print "done"  # expect: done
