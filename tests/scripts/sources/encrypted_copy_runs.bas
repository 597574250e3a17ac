# A script that writes its encrypted copy (includes and libraries merged)
# at load, then the copy: both print the same. The copy does not write
# itself again.
run "sources/encrypt_me.bas"
# expect: plain part
# expect: included part
# expect: 42.000000
run "encrypt_me.obe"
# expect: plain part
# expect: included part
# expect: 42.000000
