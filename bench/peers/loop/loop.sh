# Whole numbers alone: the hundredths are reckoned apart.
n=0
while true; do
  m=$n
  n=$((m * 101 / 100 + 1 - m / 100))
  ((n < 1000000)) || break
done
echo "N $n"
