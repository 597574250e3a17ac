# goto to an unknown label reports error 7 on its line; with --on-error=continue
# the script goes on with the next statement and the run exits with status 1.
print "before"  # expect: before
goto nowhere  # expect error 7
print "after"  # expect: after
