d = {}
for i in range(1, 600001):
    key = i % 1000
    d[key] = d.get(key, 0) + 1
print(len(d))
print(d[7])
