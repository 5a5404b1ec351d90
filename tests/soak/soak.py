"""Runs soak.rbs for some seconds and watches it: memory, descriptors and mappings stay as they are.

    soak.py TQX SECONDS
"""
import os
import pathlib
import subprocess
import sys
import tempfile
import time

SCRIPT = pathlib.Path(__file__).with_name("soak.rbs")
# What a quarter of the samples stay below may rise by: the allocator gives back in pieces and maps by itself, and
# how many mapped pictures are held is chance. Peaks are chance too, but what leaks is there in every sample.
SLACK = {"resident KB": 8192, "descriptors": 8, "mappings": 40}


def sample(process):
    folder = pathlib.Path("/proc") / str(process)
    status = (folder / "status").read_text()
    resident = next(line for line in status.splitlines() if line.startswith("VmRSS"))
    maps = (folder / "maps").read_text().splitlines()
    return int(resident.split()[1]), len(os.listdir(folder / "fd")), len(maps)


def watch(run, seconds):
    """A sample every tenth of a second."""
    samples = []
    end = time.monotonic() + seconds
    while time.monotonic() < end and run.poll() is None:
        try:
            samples.append(sample(run.pid))
        except (FileNotFoundError, StopIteration, ProcessLookupError):
            break  # it has just ended
        time.sleep(0.1)
    return samples


def lower_quartile(samples, column):
    return sorted(row[column] for row in samples)[len(samples) // 4]


def main():
    tqx, seconds = sys.argv[1], float(sys.argv[2])
    with tempfile.TemporaryDirectory() as folder:
        run = subprocess.Popen([tqx, "run", "--leaks", SCRIPT, str(seconds), folder], stdout=subprocess.PIPE, text=True)
        samples = watch(run, seconds)
        out, _ = run.communicate(timeout=600)
        left = [name for name in os.listdir(folder) if name.startswith("scratch")]
    assert run.returncode == 0, f"the script ended with {run.returncode}"
    assert not left, f"scratch files stay: {left}"
    # Everything has been in use for a while after the first half.
    half = len(samples) // 2
    assert half > 5, "too few samples"
    for column, (name, slack) in enumerate(SLACK.items()):
        before = lower_quartile(samples[:half], column)
        after = lower_quartile(samples[half:], column)
        marks = [samples[len(samples) * quarter // 4 - 1][column] for quarter in (1, 2, 3, 4)]
        print(
            f"{name}: {before} in the first half, {after} in the second; at the end of each quarter {marks}, "
            f"at most {max(row[column] for row in samples)}"
        )
        assert after <= before + slack, f"{name} grow"
    print(out.strip())


main()
