values=()
n=0
while true; do
  values+=("$n")
  n=$((n + 1))
  ((n < 1000000)) || break
done
whole=0
for value in "${values[@]}"; do whole=$((whole + value)); done
sum=0
at=0
while true; do
  ((at == ${#values[@]})) && break
  sum=$((sum + values[at]))
  at=$((at + 1))
done
echo "RAZEM $whole"
echo "SUMA $sum"
