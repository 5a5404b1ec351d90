s = "".join(chr(97 + i % 26) for i in range(1, 80001))
n = 0
for j in range(25):
    for i in range(80000):
        if s[i] == "e":
            n = n + 1
print(n)
