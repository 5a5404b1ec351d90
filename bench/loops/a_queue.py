a = []
for i in range(1, 100001):
    a.insert(0, i)
while len(a) > 0:
    a.pop(0)
print(len(a) - 1)
