n = 0
for j in range(1, 9):
    a = []
    x = j
    for i in range(100000):
        x = (x * 1103515245 + 12345) % 2147483648
        a.append(x)
    a.sort()
    n = n + a[50000] // 1000
print(n)
