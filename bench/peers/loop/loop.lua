local n, m = 0
repeat
  m = n
  n = m * 1.01 + 1 - m * 0.01
until not (n < 1000000)
print("N", n)
