#!/usr/bin/env python3
"""Turns what tqx_bench measured into the table of docs/speed.md.

    build/release/bin/tqx_bench --benchmark_format=json >speed.json
    tools/speed-table.py speed.json
"""
import json
import re
import sys


def row_of(benchmark):
    name = re.sub(r"(^BM_)|(/(manual|real)_time$)", "", benchmark["name"])
    share = benchmark["best_memcpy%"]
    return f"| {name} | {benchmark['best_MP/s']:,.0f} | {share:.{0 if share >= 10 else 1}f} % |"


def main():
    with open(sys.argv[1]) as file:
        benchmarks = json.load(file)["benchmarks"]
    print("| Benchmark | MP/s | of memcpy |\n|---|---:|---:|")
    for benchmark in benchmarks:
        if "best_memcpy%" in benchmark:
            print(row_of(benchmark))


main()
