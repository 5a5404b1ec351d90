#!/usr/bin/env python3
"""Compares the runs that bench/compare.sh left in a folder: old-1.json, new-1.json, and so on."""
import collections
import json
import pathlib
import sys


def speed_of(benchmark):
    """More is better: percent of the memcpy measured beside it, else calls a second."""
    unit = {"ns": 1e9, "us": 1e6, "ms": 1e3, "s": 1}[benchmark["time_unit"]]
    return benchmark.get("best_memcpy%") or unit / benchmark["real_time"]


def speeds_in(folder, side):
    speeds = collections.defaultdict(list)
    for path in sorted(folder.glob(f"{side}-*.json")):
        for benchmark in json.loads(path.read_text())["benchmarks"]:
            if benchmark.get("run_type") != "aggregate":
                speeds[benchmark["name"]].append(speed_of(benchmark))
    return speeds


def verdict(old, new):
    if max(new) < min(old):
        return "LOSS"
    return "gain" if min(new) > max(old) else ""


def main():
    folder = pathlib.Path(sys.argv[1])
    old, new = speeds_in(folder, "old"), speeds_in(folder, "new")
    losses = 0
    print(f"{'benchmark':48} {'old, worst to best':>24} {'new, worst to best':>24} {'best':>7}")
    for name in (name for name in old if name in new):
        found = verdict(old[name], new[name])
        losses += found == "LOSS"
        spans = [f"{min(runs):.5g} to {max(runs):.5g}" for runs in (old[name], new[name])]
        print(f"{name:48} {spans[0]:>24} {spans[1]:>24} {max(new[name]) / max(old[name]):7.2f} {found}")
    for name in sorted(old.keys() ^ new.keys()):
        print(f"{name:48} only in {'old' if name in old else 'new'}")
    print(f"{losses} {'loss' if losses == 1 else 'losses'}")
    return 1 if losses else 0


sys.exit(main())
