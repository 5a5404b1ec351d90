words = "spade heart club diamond joker".split()
n = 0
for i in range(1, 3000001):
    if words[i % 5] == "diamond":
        n = n + 1
print(n)
