local name, sum, n = "STACJA", 0, 0
local line, upper, place, length
repeat
  line = name .. "przeplyw=125"
  upper = line:upper()
  place = upper:find("=12", 1, true) - 1
  name = upper:sub(1, place)
  length = n % 20 + 4
  name = name:sub(-length)
  sum = sum + place
  n = n + 1
until not (n < 1000000)
print("NAZWA", name)
print("SUMA", sum)
