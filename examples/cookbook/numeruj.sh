#!/bin/sh
# numeruj.sh CSV PLIK: każdy wiersz pliku CSV pod nagłówkiem jako sekcja z wierszem WIERSZ:..., w postaci dla READ_FILE.
set -e
awk 'NR > 1 { sub(/\r$/, ""); printf "[%d]\r\nWIERSZ:%s\r\n", NR - 1, $0 }' "$1" >"$2.nowy"
mv "$2.nowy" "$2"
