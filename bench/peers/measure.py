#!/usr/bin/env python3
"""Measures the rows of rows.py and writes what came out as JSON.

    measure.py BENCHMARKS LEVEL FILE [--filter REGEX] [--runs COUNT]

Our benchmarks run first and then, row by row, the peers: each call with a memcpy of the larger picture
right before it. Medians count. What a call does a second, as a part of what the memcpy does, is
what carries over between machines and survives other work on this one.
"""
import argparse
import ctypes
import json
import os
import re
import statistics
import subprocess
import sys
import time

LEAST_SECONDS = 0.05  # of calls, beyond the least number of them


def seconds(call):
    """The processor's time: while other processes have the processor, it stands still."""
    start = time.process_time()
    call()
    return time.process_time() - start


class Copy:
    """A memcpy between two blocks that were touched before."""

    def __init__(self, size):
        self.size = int(size)
        self.source, self.dest = (numpy.ones(self.size, numpy.uint8) for _ in range(2))

    def __call__(self):
        ctypes.memmove(self.dest.ctypes.data, self.source.ctypes.data, self.size)


def median_of(call, copy, runs):
    """Medians of the call's seconds and of the memcpy's."""
    call()
    calls, copies = [], []
    while len(calls) < runs or sum(calls) < LEAST_SECONDS and len(calls) < 10 * runs:
        copies.append(seconds(copy))
        calls.append(seconds(call))
    return statistics.median(calls), statistics.median(copies)


def measure_peer(peer, row, pictures, copy, runs):
    made = peer.make(pictures, row.format)
    calls = made.calls if isinstance(made, rows.Parts) else [made]
    taken = [median_of(call, copy, runs) for call in calls]
    call, memcpy = sum(t[0] for t in taken), statistics.median(t[1] for t in taken)
    return {"library": peer.library, "call": peer.call, "mps": row.pixels / call / 1e6,
            "share": row.bytes / call / (2 * row.picture / memcpy)}


def measure_ours(benchmarks, names, runs):
    """Ours by their names; again with more time where they came to fewer calls than wanted."""
    results = {}
    for least_time in (0.05, 0.2, 0.8, 3.2, 13):
        left = [name for name in names if name not in results]
        if not left:
            break
        command = [benchmarks, f"--benchmark_filter=^BM_({'|'.join(map(re.escape, left))})(/(real|manual)_time)?$",
                   f"--benchmark_min_time={least_time}", "--benchmark_format=json"]
        run = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, check=True, text=True)
        for result in json.loads(run.stdout)["benchmarks"]:
            if result["iterations"] >= runs:
                name = re.sub(r"^BM_|/(real|manual)_time$", "", result["name"])
                results[name] = {"mps": result["MP/s"], "share": result["memcpy%"] / 100}
    return results


def photos(benchmarks):
    photo = numpy.frombuffer(subprocess.run([benchmarks, "--photo"], stdout=subprocess.PIPE, check=True).stdout,
                             numpy.uint8).reshape(rows.HEIGHT, rows.WIDTH, 4)
    weighted = photo[:, :, 0] * 77 + photo[:, :, 1] * 151 + photo[:, :, 2] * numpy.uint32(28)
    return {"RGBA": photo.copy(), "RGB": numpy.ascontiguousarray(photo[:, :, :3]),
            "gray": (weighted >> 8).astype(numpy.uint8)}


def about(level):
    with open("/proc/cpuinfo") as file:
        processor = re.search(r"model name\s*: (.*)", file.read()).group(1)
    from importlib import import_module
    magick, vips = import_module("magick"), import_module("vips")
    return {"level": level, "processor": processor,
            "compiler": subprocess.run(["c++", "--version"], stdout=subprocess.PIPE, text=True).stdout.split("\n")[0],
            "libraries": [f"OpenCV {rows.cv2.__version__}", "zimg " + package_version("libzimg2"),
                          f"Pillow {rows.Image.__version__}", f"numpy {numpy.__version__}", f"libvips {vips.VERSION}",
                          magick.IMAGE_MAGICK_VERSION, magick.GRAPHICS_MAGICK_VERSION]}


def package_version(name):
    found = subprocess.run(["dpkg-query", "-W", "-f", "${Version}", name], stdout=subprocess.PIPE, text=True)
    return re.split(r"[+-]", found.stdout)[0]


def measure(row, ours, arguments, pictures):
    copy = Copy(row.picture)
    peers = [measure_peer(peer, row, pictures, copy, arguments.runs) for peer in row.peers]
    best = max(peer["share"] for peer in peers)
    print(f"{row.name:34} {row.format:5} {100 * ours['share']:6.1f} % {ours['share'] / best:6.2f}", file=sys.stderr)
    return {"name": row.name, "format": row.format, "differs": row.differs, "ours": ours, "peers": peers}


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("benchmarks")
    parser.add_argument("level", choices=("avx2", "avx512"))
    parser.add_argument("file")
    parser.add_argument("--filter", default=".")
    parser.add_argument("--runs", type=int, default=7)
    arguments = parser.parse_args()
    load(arguments.level)
    pictures = photos(arguments.benchmarks)
    chosen = [row for row in rows.rows if re.search(arguments.filter, f"{row.name} {row.format}")]
    ours = measure_ours(arguments.benchmarks, [row.bench for row in chosen], arguments.runs)
    measured = [measure(row, ours[row.bench], arguments, pictures) for row in chosen]
    result = with_earlier({"about": about(arguments.level), "rows": measured}, arguments.file)
    with open(arguments.file, "w") as file:
        json.dump(result, file, indent=1)


def with_earlier(result, path):
    """Between its rows those that weren't chosen now, if the same machine and libraries gave them."""
    try:
        with open(path) as file:
            earlier = json.load(file)
    except (OSError, ValueError):
        return result
    if earlier["about"] != result["about"]:
        return result
    known = {(row["name"], row["format"]): row for row in earlier["rows"] + result["rows"]}
    order = [(row.name, row.format) for row in rows.rows]
    return {"about": result["about"], "rows": [known[key] for key in order if key in known]}


def load(level):
    """Imports the libraries, held down to the level: they ask the processor when they are loaded."""
    global numpy, rows
    os.environ["TQX_CPU_LEVEL"] = level
    os.environ["OMP_NUM_THREADS"] = "1"
    if level == "avx2":
        os.environ["OPENCV_CPU_DISABLE"] = "AVX512F,AVX512-COMMON,AVX512-SKX,AVX512-CNL,AVX512-CLX,AVX512-ICL"
        os.environ["NPY_DISABLE_CPU_FEATURES"] = "AVX512F AVX512CD AVX512_SKX AVX512_CLX AVX512_CNL AVX512_ICL"
    import numpy
    import rows
    rows.cv2.setNumThreads(1)
    numpy.seterr(all="ignore")


main()
