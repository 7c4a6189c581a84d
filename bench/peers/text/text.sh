name=STACJA
sum=0
n=0
while true; do
  line="${name}przeplyw=125"
  upper="${line^^}"
  before="${upper%%=12*}" place="${#before}"
  name="${upper:0:place}"
  length=$((n % 20 + 4))
  name="${name: -length}"
  sum=$((sum + place))
  n=$((n + 1))
  ((n < 1000000)) || break
done
echo "NAZWA $name"
echo "SUMA $sum"
