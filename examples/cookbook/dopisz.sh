#!/bin/sh
# dopisz.sh PLIK WIERSZ: dopisuje wiersz na końcu pliku.
printf '%s\r\n' "$2" >>"$1"
