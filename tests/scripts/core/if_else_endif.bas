# if/else/endif, nested blocks, and the rule that every if needs its endif.
x = 5
if x = 5 then
  print "then branch"  # expect: then branch
else
  print "wrong else"
endif
if x = 6 then
  print "wrong then"
else
  print "else branch"  # expect: else branch
endif
# a false condition skips nested blocks, including their own else
if x = 6 then
  if x = 5 then
    print "wrong inner"
  else
    print "wrong inner else"
  endif
  print "wrong outer"
else
  print "outer else"  # expect: outer else
endif
# a true branch that reaches its else skips past a nested block to the endif
if x = 5 then
  print "outer then"  # expect: outer then
else
  if x = 5 then
    print "wrong nested"
  endif
  print "wrong else body"
endif
# one-line form, also closed by endif
if x = 5 then print "one line" endif  # expect: one line
if x = 4 then print "wrong one line" endif
print "after one line"  # expect: after one line
# a lone endif does nothing
endif
IF x => 5 THEN
  print "upper case words"  # expect: upper case words
ENDIF
# no then
# the token after the condition must be "then"; it is used up either way
if x = 5 endif  # expect error 9
print "end"  # expect: end
