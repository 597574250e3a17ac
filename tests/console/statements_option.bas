# statements from the command line
