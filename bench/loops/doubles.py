x = 1.0
for i in range(1, 3000001):
    x = x * 0.75 + 0.5 / i
print(x > 0)
