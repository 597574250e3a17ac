# "findfiles" appends the names that match a pattern of * and ?, sorted;
# no match leaves the result alone.
open "ff_a.dat" for output as 1
close 1
open "ff_b.dat" for output as 1
close 1
open "ff_long.dat" for output as 1
close 1
n = findfiles("ff_?.dat", 0)
print n[0]                              # expect: ff_a.dat
print n[1]                              # expect: ff_b.dat
print ubound("n")                       # expect: 2
n = findfiles("ff_*", 0)
print ubound("n")                       # expect: 3
m = findfiles("nothing*.none", 0)
print m                                 # expect:
m = findfiles("ff_a.dat")               # expect error 24
