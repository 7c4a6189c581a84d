# Whether the argument is the account that this runs under: its name, or its number where it has none.
name=$(id -un 2>/dev/null) || name=$(id -u)
test "$1" = "$name"
