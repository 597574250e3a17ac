# A condition is one comparison between two expressions.
# Greater-or-equal is spelled => in this language; >= and =< are no operators.
if 1 = 1 then
  print "eq"  # expect: eq
endif
if 1 == 1 then
  print "eqeq"  # expect: eqeq
endif
if 2 > 1 then
  print "gt"  # expect: gt
endif
if 1 < 2 then
  print "lt"  # expect: lt
endif
if 1 <> 2 then
  print "ne"  # expect: ne
endif
if 1 != 2 then
  print "bang-ne"  # expect: bang-ne
endif
if 2 <= 2 then
  print "le"  # expect: le
endif
if 2 => 2 then
  print "ge"  # expect: ge
endif
if 1 => 2 then
  print "wrong ge"
endif
if 3 < 2 then
  print "wrong lt"
endif
if 1 + 1 = 2 then
  print "sum"  # expect: sum
endif
# ~~ is "within 1e-12" for numbers and "contains" for strings
if 1 ~~ 1.0000000000001 then
  print "approx"  # expect: approx
endif
if 1 ~~ 1.001 then
  print "wrong approx"
endif
if "abcdef" ~~ "cde" then
  print "contains"  # expect: contains
endif
if "abcdef" ~~ "xyz" then
  print "wrong contains"
endif
# strings compare ordinally and case-sensitively
if "abc" < "abd" then
  print "str lt"  # expect: str lt
endif
if "B" < "a" then
  print "upper first"  # expect: upper first
endif
if "a" = "A" then
  print "wrong case"
endif
if "a" <> "A" then
  print "case matters"  # expect: case matters
endif
# truth values are numbers
if True = 1 then
  print "true is one"  # expect: true is one
endif
if False < True then
  print "false below true"  # expect: false below true
endif
# the left operand's type decides: a number reads the right string as a number
if 10 = "10" then
  print "num vs str"  # expect: num vs str
endif
# An unknown operator is error 0 and the condition is false; the right
# operand is then not read, so it stands where "then" is expected (error 9),
# nothing is skipped and the block's body runs.
if 2 >= 1 then  # expect error 0, 9
  print "body 1"  # expect: body 1
endif
if 1 =< 2 then  # expect error 0, 9
  print "body 2"  # expect: body 2
endif
if 1 ! 2 then  # expect error 0, 9
  print "body 3"  # expect: body 3
endif
if 1 ~ 2 then  # expect error 0, 9
  print "body 4"  # expect: body 4
endif
# no operator at all: the right operand is taken as the operator, so "then"
# follows and the false condition skips the block
if 1 2 then  # expect error 0
  print "wrong none"
endif
print "done"  # expect: done
