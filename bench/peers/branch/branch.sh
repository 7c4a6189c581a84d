station=Z1
mode=auto
a=0 b=0 c=0 n=0
while true; do
  if [[ $station == Z1 ]]; then
    station=Z2
    a=$((a + 1))
  else
    if [[ $station == Z2 ]]; then
      if [[ $mode == auto ]]; then
        station=Z3
      else
        station=Z1
      fi
      b=$((b + 2))
    else
      station=Z1
      c=$((c + 3))
    fi
  fi
  n=$((n + 1))
  ((n < 1000000)) || break
done
echo "STACJA $station"
echo "A $a"
echo "B $b"
echo "C $c"
