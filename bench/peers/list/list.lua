local values, n = {}, 0
repeat
  values[#values + 1] = n
  n = n + 1
until not (n < 1000000)
local whole = 0
for _, value in ipairs(values) do whole = whole + value end
local sum, at = 0, 1
while true do
  if at > #values then break end
  sum = sum + values[at]
  at = at + 1
end
print("RAZEM", whole)
print("SUMA", sum)
