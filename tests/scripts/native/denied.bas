# Without the native capability "declare" is refused, also in a script
# started with "run", and nothing becomes callable.
# args: --deny=native
declare function getpid lib "c" () as integer  # expect error 40
x = getpid()  # expect error 21
run "run/declare_child.bas"
# expect: child after
print "after"  # expect: after
