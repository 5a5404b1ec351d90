n = 0
for i in range(500000):
    try:
        raise OSError()
    except OSError as e:
        n = n + 1
print(n)
