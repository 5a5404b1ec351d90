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
SLACK_KB = 4096  # of resident memory: the allocator gives back in pieces
SLACK_MAPS = 40  # what the allocator maps by itself comes and goes


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
    for name, column, slack in (("resident KB", 0, SLACK_KB), ("descriptors", 1, 0), ("mappings", 2, SLACK_MAPS)):
        before = max(row[column] for row in samples[:half])
        after = max(row[column] for row in samples[half:])
        print(f"{name}: at most {before} in the first half, {after} in the second")
        if name == "descriptors":
            slack = 8  # as many mapped pictures as are held, by chance
        assert after <= before + slack, f"{name} grow"
    print(out.strip())


main()
