n = 0
for j in range(30):
    a = []
    for i in range(1, 100001):
        a.append(i)
    for v in a:
        if v > 50000:
            n = n + 1
print(n)
