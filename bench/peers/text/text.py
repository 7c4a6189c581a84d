def main():
    name = "STACJA"
    total = 0
    n = 0
    while True:
        line = name + "przeplyw=125"
        upper = line.upper()
        place = upper.find("=12", 0)
        name = upper[:place]
        length = n % 20 + 4
        name = name[-length:]
        total = total + place
        n = n + 1
        if not n < 1000000:
            break
    print("NAZWA", name)
    print("SUMA", total)


main()
