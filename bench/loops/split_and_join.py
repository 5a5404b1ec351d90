line = "one,two,three,four,five,six,seven,eight"
n = 0
for i in range(200000):
    fields = line.split(",")
    n = n + len(";".join(fields))
print(n)
