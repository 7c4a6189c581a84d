def add(total, count, times):
    total = total + count * times
    return total


def main():
    total = 0
    n = 0
    while True:
        total = add(total, n, 2)
        n = n + 1
        if not n < 1000000:
            break
    print("SUMA", total)


main()
