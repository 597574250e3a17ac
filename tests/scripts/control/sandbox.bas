# Under --sandbox every statement that reaches outside the process reports
# error 40 and every such function error 21; neither does anything else, and
# the script goes on.
# args: --sandbox
open "made.txt" for output as 1 text  # expect error 40
n = writeline(1, "x")  # expect error 21
close 1  # expect error 40
f = findfiles("*", 0)  # expect error 21
h = dbfcreate("t", "a")  # expect error 21
runexe "/usr/bin/touch", "ran"  # expect error 40
run "other.bas"  # expect error 40
declare function getpid lib "libc.so.6" () as long  # expect error 40
p = comportopen(1, 9600)  # expect error 21
o = createobject("some.object")  # expect error 21
a = ask("sure?")  # expect error 21
d = fileopendlg("*.txt")  # expect error 21
playsound "x.wav"  # expect error 40
print "after"  # expect: after
