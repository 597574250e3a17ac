# the script comes from standard input
