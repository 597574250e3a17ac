# A record type packs its fields; a record variable starts zeroed, so every
# field reads as zero and a string field as an empty text.
type Sample
  c as char
  i as integer
  f as float
  d as double
  arr[3] as double
  name as string
  text[4] as string
endtype
dim s as Sample
print s.c; " "; s.i  # expect: 0 0
print s.f; " "; s.d  # expect: 0.000000 0.000000
print s.arr; " "; s.arr[2]  # expect: 0.000000 0.000000
print "|"; s.name; "|"; s.text; "|"  # expect: |||
# field names compare without regard to case, local record names too
print S.I; " "; s.ARR[1]  # expect: 0 0.000000
# a field read is a value in expressions
x = s.i + 5
print x  # expect: 5.000000
# an element outside the field reads as nothing (the field has 3 elements)
print "|"; s.arr[3]; "|"; s.arr[-1]; "|"  # expect: |||
# an unknown field is no record field: the word is then an object member,
# and s is no variable
y = s.nosuch  # expect error 37
# type names are case-sensitive
dim t as sample  # expect error 1
dim u as NoSuchType  # expect error 1
print "end"  # expect: end
