# Malformed "event", "throw" and "watch" statements report their errors and
# the script goes on with the next line.
x = 1
event create Tick, nosuchfunction  # expect error 21
event Tick, handler  # expect error 1
event clear Tick, handler  # expect error 40
event create 5, handler  # expect error 1
throw Tick  # expect error 1
watch create y, Changed  # expect error 37
watch create x  # expect error 1
watch clear x, Changed  # expect error 40
print "still running"  # expect: still running
end

function handler()
endfunction
