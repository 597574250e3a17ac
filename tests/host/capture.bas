# Run by the capture host (capture_host.c): prints, an error the host
# answers with "continue", an array, a global, and an event handler whose
# local the host reads from inside a host function.
global Counter
Counter = 1
print "hello "; greeting
dim squares[4]
for i = 0 to 3
  squares[i] = i * i
next
print "Grüße €"
dim broken[0]
print "after the error"
event create Peek, onpeek
stayresident
end

function onpeek(n)
  inside = n * 2
  print "counter "; Counter; " n "; n
  call hostpeek()
endfunction
