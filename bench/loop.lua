local total = 0
for i = 1, 1000000 do
  total = total + i * 2
end
print(string.format("%f", total))
