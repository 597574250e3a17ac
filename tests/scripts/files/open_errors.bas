# Errors of "open" and "close", and what they leave alone.
open "missing.txt" as 1                 # expect error 47
open "missing.txt" for append as 1 text # expect error 47
open "." for input as 1                 # expect error 47
open 12 as 1                            # expect error 31
open "x.txt" for 5 as 1                 # expect error 1
open "x.txt" for                        # expect error 1
open "x.txt" for output as 2 junk 7 text
print writeline(2, "kept")              # expect: 1
close 2
close 99
close 300
close "2"                               # expect error 31
# a failed "open" keeps the file that was open under the number
open "x.txt" for input as 3 text
open "missing.txt" as 3                 # expect error 47
a = readline(3)
print len(a)                            # expect: 6
# a keyword after "for" that is none of the three opens for reading
open "x.txt" for text as 4
x = write(4, 1, 1)                      # expect error 53
