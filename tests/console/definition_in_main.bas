print "a"
function f()
endfunction
