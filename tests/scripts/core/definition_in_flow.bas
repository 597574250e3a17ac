# A function definition reached by the statement loop is error 28; its name,
# followed by "(", is then read as a function call at the start of a
# statement, which is error 18 and ends the run.
print "start"  # expect: start
function f()  # expect error 28, 18
  print "body"
endfunction
print "after"
