# Events from the command line arrive after the main program, in order, with
# numbers as numbers and other text as strings; unknown events do nothing; a
# handler that misses arguments reports error 24 on its definition line.
# args: --event 'Ping,1,abc' --event 'Ping,2.5,-3' --event 'Ping' --event 'Unknown,1' --resident-timeout=0
event create Ping, onping
print "main"  # expect: main
stayresident
end
# expect: ping 1 abc
# expect: ping 2.500000 -3

function onping(a, b)  # expect error 24
  print "ping "; a; " "; b
endfunction
