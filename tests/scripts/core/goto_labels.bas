# goto moves to a label; labels stand after the main program's end.
print "one"  # expect: one
# expect: two
goto second
print "skipped"
back:
print "three"  # expect: three
goto finish
second:
print "two"
goto back
finish:
# labels are case-sensitive
goto Finish  # expect error 7
goto nowhere  # expect error 7
goto final
print "skipped too"
end
final:
print "final"  # expect: final
end
