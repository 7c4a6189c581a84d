local function add(sum, count, times)
  sum = sum + count * times
  return sum
end
local sum, n = 0, 0
repeat
  sum = add(sum, n, 2)
  n = n + 1
until not (n < 1000000)
print("SUMA", sum)
