def main():
    n = 0
    while True:
        m = n
        n = m * 1.01 + 1 - m * 0.01
        if not n < 1000000:
            break
    print("N", n)


main()
