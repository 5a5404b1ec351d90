row = bytes(1000)
n = 0
for j in range(3000):
    for i in range(1000):
        n = n + row[i]
print(n)
