# Array writes and reads: a sieve of Eratosthenes up to 16000, 20 times.
for round = 1 to 20
  dim sieve[16000]
  for i = 0 to 15999
    sieve[i] = 0
  next
  count = 0
  for i = 2 to 15999
    if sieve[i] = 0 then
      count = count + 1
      j = i * i
      do while j < 16000
        sieve[j] = 1
        j = j + i
      loop
    endif
  next
next
print count
