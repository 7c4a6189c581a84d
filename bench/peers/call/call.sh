add() {
  sum=$(($1 + $2 * $3))
  return
}
sum=0
n=0
while true; do
  add "$sum" "$n" 2
  n=$((n + 1))
  ((n < 1000000)) || break
done
echo "SUMA $sum"
