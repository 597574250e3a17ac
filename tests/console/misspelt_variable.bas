total = 5
count = total + totl
