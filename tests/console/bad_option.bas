# an unknown option
