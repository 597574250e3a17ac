next = 1
