exit 3
