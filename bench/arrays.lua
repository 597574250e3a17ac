local count
for round = 1, 20 do
  local sieve = {}
  count = 0
  for i = 2, 15999 do
    if not sieve[i] then
      count = count + 1
      local j = i * i
      while j < 16000 do sieve[j] = true; j = j + i end
    end
  end
end
print(string.format("%f", count))
