# A call-depth budget ends an endless recursion with error 104, well before
# the interpreter's own bound (error 13).
# args: --max-depth=50
print "start"  # expect: start
print forever(1)
print "never"
end
function forever(n)
  forever = forever(n + 1)  # expect error 104
endfunction
