# "run" of a file that cannot be loaded: the inner interpreter reports error
# 17 (under its own path) and the caller goes on.
# exit: 1
run "run/no_such_script.bas"
print "after"  # expect: after
