# Fields may hold up to 16000 elements; several records of such a type are
# made and freed without trouble.
type Big
  values[16000] as double
  names[16000] as string
  count as integer
endtype
dim a as Big
dim b as Big
global c as Big
print a.values[15999]; " "; b.count  # expect: 0.000000 0
print "|"; a.values[16000]; "|"  # expect: ||
print "|"; c.names[15999]; "|"  # expect: ||
# making the same record again replaces it
for i = 1 to 50
  dim a as Big
next
print a.count  # expect: 0
