s = 0
for i in range(1, 4000001):
    s = s + i
print(s)
