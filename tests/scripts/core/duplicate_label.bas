# Two labels of one name are found before the program starts (error 6 on the
# second); the program then runs.
print "runs"  # expect: runs
# the scan stopped at the duplicate, so the function after it is unknown
x = later()  # expect error 21
goto twice
end
twice:
print "first label"  # expect: first label
end
twice:  # expect error 6
print "second label"
end
function later()
  later = 1
endfunction
