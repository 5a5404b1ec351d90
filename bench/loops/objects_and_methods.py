class Counter:
    def __init__(self):
        self.total = 0

    def add(self, n):
        self.total = self.total + n


for j in range(200000):
    c = Counter()
    for i in range(1, 11):
        c.add(i)
print(c.total)
