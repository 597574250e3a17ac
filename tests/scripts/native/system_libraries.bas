# Functions of the C and maths libraries, named as scripts name libraries:
# "c", "libc", "libm.so.6" and "m" all reach the library the system has.
declare function cabs lib "c" alias "abs" (byval n as integer) as integer
declare function atoi lib "libc" (s as string) as integer
declare function strlen lib "libc.so.6" (s as string) as integer
declare function toupper lib "c" (byval c as integer) as integer
declare function getpid lib "c" () as integer
declare sub strcpy lib "c" (target as string, source as string)
declare function sqrtf lib "m" (byval x as float) as float
declare function powf lib "libm" (byval x as float, byval y as float) as float
declare function floorf lib "libm.so.6" (byval x as double) as double
print cabs(-42)  # expect: 42
print atoi("123abc")  # expect: 123
print strlen("seven c")  # expect: 7
print toupper(97)  # expect: 65
if getpid() > 0 then
  print "pid"  # expect: pid
endif
t = ""
call strcpy(t, "copied")
print t  # expect: copied
print sqrtf(16)  # expect: 4.000000
print powf(2, 10)  # expect: 1024.000000
print floorf(-2.5)  # expect: -3.000000
