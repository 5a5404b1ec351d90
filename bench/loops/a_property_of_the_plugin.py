class P:
    pass


p = P()
p.width = 10
n = 0
for i in range(4000000):
    n = n + p.width
print(n)
