local time, fits, count, n = 1709251200, 0, 0, 0
local function check(t)
  local at = os.date("*t", t)
  return at.sec == 0 and at.min % 30 == 0 and at.hour >= 6 and at.hour <= 21 and at.wday >= 2 and at.wday <= 6
end
repeat
  fits = check(time) and 1 or 0
  count = count + fits
  time = time + 300
  n = n + 1
until not (n < 1000000)
print("ILE", count)
