# A malformed declaration is reported on its "type" line, skipped up to its
# "endtype" (its lines never run as statements) and not entered.
type  # expect error 1
endtype
type Bad1  # expect error 1
  a integer
endtype
type Bad2  # expect error 1
  a as unicode
endtype
type Bad3  # expect error 1
  a as
endtype
type Bad4  # expect error 32
  a[0] as integer
endtype
type Bad5  # expect error 32
  a[16001] as double
endtype
type Bad6  # expect error 33
  [3] as integer
endtype
type Bad7  # expect error 33
  5 as integer
endtype
type Bad8  # expect error 1
  a[3 as integer
endtype
# "a(" reads as a call, not a name
type Bad9  # expect error 33
  a( as integer
endtype
print "after"  # expect: after
dim v as Bad1  # expect error 1
# blank and comment lines may stand between fields; trailing comments are fine
type Good

  a as integer  # first field
  # a comment line
  rem another
  b[2] as char
endtype
dim g as Good
print g.a; " "; g.b[1]  # expect: 0 0
# declaring a type again replaces it
type Good
  z as double
endtype
dim h as Good
print h.z  # expect: 0.000000
# a record made from the old layout keeps it
print g.a  # expect: 0
