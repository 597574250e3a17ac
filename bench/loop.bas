# Tight arithmetic loop: one million additions.
total = 0
for i = 1 to 1000000
  total = total + i * 2
next
print total
