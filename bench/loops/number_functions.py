from math import sqrt

x = 0.0
for i in range(1, 2000001):
    x = max(abs(sqrt(i) - x), 1.0)
print(x > 0)
