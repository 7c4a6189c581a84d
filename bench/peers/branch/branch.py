def main():
    station = "Z1"
    mode = "auto"
    a = b = c = n = 0
    while True:
        if station == "Z1":
            station = "Z2"
            a = a + 1
        else:
            if station == "Z2":
                if mode == "auto":
                    station = "Z3"
                else:
                    station = "Z1"
                b = b + 2
            else:
                station = "Z1"
                c = c + 3
        n = n + 1
        if not n < 1000000:
            break
    print("STACJA", station)
    print("A", a)
    print("B", b)
    print("C", c)


main()
