local station, mode = "Z1", "auto"
local a, b, c, n = 0, 0, 0, 0
repeat
  if station == "Z1" then
    station = "Z2"
    a = a + 1
  else
    if station == "Z2" then
      if mode == "auto" then
        station = "Z3"
      else
        station = "Z1"
      end
      b = b + 2
    else
      station = "Z1"
      c = c + 3
    end
  end
  n = n + 1
until not (n < 1000000)
print("STACJA", station)
print("A", a)
print("B", b)
print("C", c)
