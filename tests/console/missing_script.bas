# a script file that is not there
