"""Measures of tqx.cluster, of this machine as it is.

    PYTHONPATH=build/release/python python3 bench/python/cluster.py each PHOTO [COUNT]
    PYTHONPATH=build/release/python python3 bench/python/cluster.py apply [SIDE]

``each``: copies of a photograph in a loop of one process and by each on all cores, both as commands of their own:
blurred and brightened as it is; then enlarged to 12 megapixels, with what a camera's photographs are put through.
``apply``: SIDE x SIDE pixels of colour in a raw file, blurred in 64 pieces on two workers to a Zarr folder, with the
most memory that a worker had; then again with one of them killed in the middle.
"""

from __future__ import annotations

import os
import pathlib
import resource
import shutil
import signal
import subprocess
import sys
import tempfile
import threading
import time
from typing import Any

import numpy as np

import tqx
import tqx.cluster

PROGRAM = """
import os, sys, tqx

def brighten(source, result):
    picture = tqx.PictureTQX.from_array(tqx.imread(source))
    tqx.imwrite(result, picture.BoxBlurFilter(None, 3, 3).GammaFilter(None, 1.5))

def develop(source, result):
    picture = tqx.PictureTQX.from_array(tqx.imread(source))
    picture.AutoLevel()
    picture.UnsharpFilter(picture.BoxBlurFilter(None, 2, 3), 0.6, 2)
    tqx.imwrite(result, picture.GammaFilter(None, 1.1))

if __name__ == "__main__":
    for source in sys.argv[3:]:
        globals()[sys.argv[1]](source, os.path.join(sys.argv[2], os.path.basename(source)))
"""


def processor_seconds() -> float:
    """What this process and those that it started and saw end have used."""
    return sum(os.times()[:4])


def timed(name: str, work: Any) -> tuple[float, float]:
    """Seconds of a call by the clock and of processors, told with the machine's load before it."""
    load, used = os.getloadavg()[0], processor_seconds()
    begin = time.perf_counter()
    work()
    seconds, used = time.perf_counter() - begin, processor_seconds() - used
    print(f"{seconds:8.2f} s, {used:.2f} of processors  {name} (load before: {load:.1f})", flush=True)
    return seconds, used


def enlarged(photo: str, path: pathlib.Path) -> str:
    """The photograph with 12 megapixels."""
    picture = tqx.PictureTQX.from_array(tqx.imread(photo))
    large = tqx.PictureTQX(4000, 3000, tqx.PictureTQX.ImageFormatRGB)
    large.Scale(picture, None, tqx.PictureTQX.ScaleLanczos3, 4000, 3000)
    tqx.imwrite(path, large)
    return str(path)


def run(*words: str) -> None:
    """A command of this interpreter."""
    subprocess.run([sys.executable, *words], check=True, stdout=subprocess.DEVNULL)


def measure_each(folder: pathlib.Path, photo: str, count: int) -> None:
    """Both cases; both ways in turn, three times."""
    compare_each(folder / "small", photo, count, "brighten")
    compare_each(folder / "large", enlarged(photo, folder / "large.jpg"), count, "develop")


def compare_each(folder: pathlib.Path, photo: str, count: int, function: str) -> None:
    """A function for copies of a photograph."""
    one, many, program = folder / "one", folder / "many", folder / "program.py"
    one.mkdir(parents=True)
    program.write_text(PROGRAM)
    sources = [str(folder / f"{i:03}.jpg") for i in range(count)]
    for source in sources:
        shutil.copy(photo, source)
    loop = [str(program), function, str(one), *sources]
    each = ["-m", "tqx.cluster", "each", f"{program}:{function}", "--out", str(many), *sources]
    cores = len(os.sched_getaffinity(0))
    for _ in range(3):
        alone = timed(f"{count} photographs in one process, {function}", lambda: run(*loop))
        shared = timed(f"{count} by each", lambda: run(*each))
        idle = cores * alone[1] / shared[1]
        print(f"{alone[0] / shared[0]:8.2f} times as fast; by processor time {idle:.2f} on {cores} idle cores")
    print("same bytes:", all((one / path.name).read_bytes() == path.read_bytes() for path in many.iterdir()))


def blur(folder: pathlib.Path, side: int, kill: bool) -> None:
    """A blur in 64 pieces on two workers."""
    from distributed import Client, LocalCluster

    chunk = side // 8
    pixels = tqx.cluster.open(folder / "pixels.raw", shape=(side, side, 3), chunk=chunk)
    result = tqx.cluster.apply(pixels, "BoxBlurFilter", 5)
    with LocalCluster(
        n_workers=2, threads_per_worker=1, dashboard_address=None, memory_limit="500MB"
    ) as cluster, Client(cluster) as client:
        future = result.to_zarr(str(folder / "blurred.zarr"), overwrite=True, compute=False)
        pids = list(client.run(os.getpid).values())
        if kill:
            threading.Timer(5, os.kill, (pids[0], signal.SIGKILL)).start()
        timed(
            f"{side} x {side} blurred" + (", a worker killed" if kill else ""), lambda: client.compute(future).result()
        )
        most = client.run(lambda: resource.getrusage(resource.RUSAGE_SELF).ru_maxrss // 1024)
        print("most resident, MB:", sorted(most.values()))


def measure_apply(folder: pathlib.Path, side: int) -> None:
    """Without and with a worker killed; a band is compared with one call on it."""
    row = np.random.default_rng(1)
    with open(folder / "pixels.raw", "wb") as file:
        for _ in range(side):
            file.write(row.integers(0, 256, (side, 3)).astype(np.uint8).tobytes())
    import zarr

    for kill in (False, True):
        blur(folder, side, kill)
        source = np.memmap(folder / "pixels.raw", np.uint8, "r", shape=(side, side, 3))
        middle = side // 2
        band = tqx.PictureTQX.from_array(np.array(source[middle - 60 : middle + 60]))
        expected = np.asarray(band.BoxBlurFilter(None, 5))[5:-5]
        got = zarr.open(str(folder / "blurred.zarr"), mode="r")[middle - 55 : middle + 55]
        print("same bytes in a band of full width:", np.array_equal(got, expected))


if __name__ == "__main__":
    with tempfile.TemporaryDirectory(prefix="tqx-measure-") as name:
        if sys.argv[1] == "each":
            measure_each(pathlib.Path(name), sys.argv[2], int((sys.argv[3:] or ["200"])[0]))
        else:
            measure_apply(pathlib.Path(name), int((sys.argv[2:] or ["20000"])[0]))
