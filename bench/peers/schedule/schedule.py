from time import localtime


def check(time):
    at = localtime(time)
    return at.tm_sec == 0 and at.tm_min % 30 == 0 and 6 <= at.tm_hour <= 21 and at.tm_wday < 5


def main():
    time = 1709251200
    count = 0
    n = 0
    while True:
        fits = check(time)
        count = count + fits
        time = time + 300
        n = n + 1
        if not n < 1000000:
            break
    print("ILE", count)


main()
