# Statement words are read in any letter case; words that are no statement
# by themselves do nothing; comments take the rest of a line.
PRINT "print upper"  # expect: print upper
pRiNt "print mixed"  # expect: print mixed
print("parenthesised")  # expect: parenthesised
x = 1 # a comment after a statement
print x  # expect: 1.000000
rem a remark line
REM x = 2
print x  # expect: 1.000000
then
endif
to
endfunction
endsub
print "still running"  # expect: still running
# "return" belongs in a function body
return  # expect error 14
STOP
print "never"
