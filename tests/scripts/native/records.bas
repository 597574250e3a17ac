# A record passes its packed buffer: the callee fills the structure and the
# script reads the fields.
type Sample
  id as integer
  ratio as float
  flag as char
  total as double
  label as string
  counts[3] as integer
endtype
declare function ob_fill_sample lib "obtest" (rec as integer, byval id as integer) as integer
declare function ob_fill_byval lib "obtest" alias "ob_fill_sample" (byval rec as integer, byval id as integer) as integer
dim s as Sample
size = ob_fill_sample(s, 7)
print size  # expect: 37
print s.id; " "; s.ratio; " "; s.flag; " "; s.total  # expect: 7 0.250000 -3 1234.500000
print s.label  # expect: filled
print s.counts[0]; " "; s.counts[2]  # expect: 7 21
# a record cannot go by value
n = ob_fill_byval(s, 1)  # expect error 31
print s.id  # expect: 7
call fillLocal()
end

sub fillLocal()
  dim t as Sample
  call ob_fill_sample(t, 3)
  print t.counts[1]  # expect: 6
endsub
