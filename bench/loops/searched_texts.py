line = "the quick brown fox jumps over the lazy dog"
n = 0
for i in range(500000):
    n = n + line.find("lazy") + 1 + len(line.replace("o", "00"))
print(n)
