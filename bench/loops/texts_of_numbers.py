n = 0
for i in range(1, 1000001):
    n = n + len(str(i))
print(n)
