echo "$#|$1|$2|$3" > wynik.txt
exit 7
