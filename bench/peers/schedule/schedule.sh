check() {
  local at
  printf -v at '%(%-S %-M %-H %u)T' "$1"
  set -- $at
  fits=$(($1 == 0 && $2 % 30 == 0 && $3 >= 6 && $3 <= 21 && $4 <= 5))
}
time=1709251200
count=0
n=0
while true; do
  check "$time"
  count=$((count + fits))
  time=$((time + 300))
  n=$((n + 1))
  ((n < 1000000)) || break
done
echo "ILE $count"
