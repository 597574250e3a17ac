# Handlers run in the order attached, once each however often attached;
# event and function names ignore case; raising an event without handlers
# does nothing.
event create Greet, hello
event create GREET, World
event create greet, "HELLO"
throw greet("a", 1)
# expect: hello a 1.000000
# expect: world a 1.000000
throw Nobody(1, 2)
event remove Greet, hello
throw Greet("b", 2)
# expect: world b 2.000000
event remove Greet, world
throw Greet("c", 3)
print "done"  # expect: done
end

function hello(who, n)
  print "hello "; who; " "; n
endfunction

function world(who, n)
  print "world "; who; " "; n
endfunction
