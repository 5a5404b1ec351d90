#!/usr/bin/env python3
"""Times what scripts do a million times beside the same in Python: loops.py TQX [--runs COUNT] [--write PAGE]

Each pair NAME.rbs and NAME.py in loops/ prints the same. Both run as processes of their own, by turns; what
counts is the median of their processor time, less the median of an empty program's. --write puts the table
between its marks in a page of the documentation.
"""

import argparse
import os
import platform
import statistics
import subprocess
import sys
import tempfile
from pathlib import Path

LOOPS = Path(__file__).resolve().parent / "loops"
PYTHON = "/usr/bin/python3"
BEGIN, END = "<!-- loops -->\n", "<!-- end of loops -->\n"


def run(words):
    """The processor time of a program in milliseconds, and what it printed."""
    process = subprocess.Popen(words, stdout=subprocess.PIPE)
    output = process.stdout.read()
    _, status, usage = os.wait4(process.pid, 0)
    process.returncode = os.waitstatus_to_exitcode(status)
    if process.returncode != 0:
        sys.exit(f"{' '.join(map(str, words))} failed")
    return 1000 * (usage.ru_utime + usage.ru_stime), output


def measure(ours, theirs, count):
    """Medians of both, run by turns; their output must be the same."""
    times = ([], [])
    for _ in range(count):
        outputs = []
        for words, taken in zip((ours, theirs), times):
            milliseconds, output = run(words)
            taken.append(milliseconds)
            outputs.append(output)
        if outputs[0] != outputs[1]:
            sys.exit(f"{ours[-1]} and {theirs[-1]} print different things")
    return [statistics.median(taken) for taken in times]


def processor():
    for line in Path("/proc/cpuinfo").read_text().splitlines():
        if line.startswith("model name"):
            return line.split(":")[1].strip()
    return platform.machine()


def version():
    return run([PYTHON, "--version"])[1].decode().strip()


def table(tqx, count):
    with tempfile.NamedTemporaryFile(suffix=".rbs") as empty:
        start = measure([tqx, "run", empty.name], [PYTHON, empty.name], 2 * count + 1)
    lines = ["| Loop | tqx, ms | python3, ms | tqx : python3 |", "|---|---:|---:|---:|"]
    for script in sorted(LOOPS.glob("*.rbs")):
        whole = measure([tqx, "run", script], [PYTHON, script.with_suffix(".py")], count)
        ours, theirs = (max(0.0, time - empty) for time, empty in zip(whole, start))
        lines.append(f"| {script.stem.replace('_', ' ')} | {ours:.0f} | {theirs:.0f} | {ours / theirs:.2f} |")
        print(lines[-1], file=sys.stderr)
    lines.append(f"| an empty program | {start[0]:.1f} | {start[1]:.1f} | {start[0] / start[1]:.2f} |")
    head = f"{processor()}, {version()}, medians of {count} runs.\n\n"
    return head + "\n".join(lines) + "\n"


def main():
    words = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    words.add_argument("tqx")
    words.add_argument("--runs", type=int, default=5)
    words.add_argument("--write", type=Path)
    given = words.parse_args()
    text = table(given.tqx, given.runs)
    print(text)
    if given.write:
        page = given.write.read_text(encoding="utf-8")
        before, rest = page.split(BEGIN)
        given.write.write_text(before + BEGIN + text + END + rest.split(END)[1], encoding="utf-8")


main()
