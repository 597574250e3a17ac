# --deny names capabilities one by one: files stay allowed here while
# starting processes is denied.
# args: --deny=process,sound
open "made.txt" for output as 1 text
n = writeline(1, "kept")
close 1
open "made.txt" for input as 1 text
s = readline(1)
print left(s, 4)  # expect: kept
close 1
runexe "/usr/bin/touch", "ran"  # expect error 40
run "made.txt"  # expect error 40
print "after"  # expect: after
