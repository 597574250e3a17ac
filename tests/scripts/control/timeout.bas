# A wall-clock budget ends a tight goto loop with error 103.
# args: --timeout=0.2
print "start"  # expect: start
goto top
end
top:
goto top  # expect error 103
