printf '%s|' "$@" > zapis.txt
exit 3
