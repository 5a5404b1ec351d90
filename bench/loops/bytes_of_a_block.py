m = bytearray(1000)
for j in range(4000):
    for i in range(1000):
        m[i] = i & 255
print(m[999])
