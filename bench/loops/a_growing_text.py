def grown():
    s = ""
    for i in range(1000000):
        s = s + "abcdef"
    return s


print(len(grown()))
