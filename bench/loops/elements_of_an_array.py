a = [0] * 1000
for j in range(1, 3001):
    for i in range(1, 1000):
        a[i] = a[i - 1] + j
print(a[999])
