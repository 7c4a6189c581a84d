def main():
    values = []
    n = 0
    while True:
        values.append(n)
        n = n + 1
        if not n < 1000000:
            break
    whole = sum(values)
    total = 0
    at = 0
    while True:
        if at == len(values):
            break
        total = total + values[at]
        at = at + 1
    print("RAZEM", whole)
    print("SUMA", total)


main()
