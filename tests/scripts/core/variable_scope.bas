# Locals are case-insensitive and belong to one scope level; globals keep
# their exact spelling and are seen from every level.
Total = 1
total = total + 1
print TOTAL  # expect: 2.000000
global G
G = 10
call setlocal()
print G  # expect: 10.000000
call setglobal()
print G  # expect: 11.000000
# a main-program local is not visible inside a function
hidden = 5
call peek()
# a global hides a local of the same spelling
global Count
Count = 1
print counter()  # expect: 2.000000
print Count  # expect: 2.000000
# locals of a function stay under its level and are seen by the next call
print remember(1)  # expect: 0.000000
print remember(2)  # expect: 1.000000
# the predefined globals are matched with their exact spelling
# an unknown name is left in place and then read as a statement of its own
t = true  # expect error 37, 3
print Nothing  # expect: 0
end
sub setlocal()
  # g (lower case) is a new local of this level, not the global G
  g = 99
endsub
sub setglobal()
  G = G + 1
endsub
sub peek()
  x = hidden  # expect error 37, 3
endsub
function counter()
  Count = Count + 1
  counter = Count
endfunction
function remember(v)
  dim last
  remember = 0
  if v = 2 then
    remember = last
  endif
  last = v
endfunction
