# This script is stored with CR LF line ends; it must run as with LF.

print "start"  # expect: start


x = 2
if x = 2 then
  print "if"  # expect: if
else
  print "wrong"
endif
for i = 1 to 2
  print i  # expect: 1.000000
  # expect: 2.000000
next

y = nosuch  # expect error 37, 3
print twice(4)  # expect: 8.000000
goto done
print "skipped"
end
done:
print "done"  # expect: done
end
function twice(n)

  twice = n * 2
endfunction
