# Under --sandbox, nothing outside the script's folder is read.
# args: --sandbox
# exit: 2
include "/etc/passwd"   # expect error 47
