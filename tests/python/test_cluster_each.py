"""A script or a function for each of many files, on a cluster of this machine."""

from __future__ import annotations

import collections
import contextlib
import os
import pathlib
import shutil
import signal
import subprocess
import sys
import textwrap
import threading
import time
from collections.abc import Callable
from typing import Any

import numpy as np
import pytest

import tqx

SCRIPT = """
Dim arguments() As String = App.Arguments()
Dim pixels As New PictureTQX(GetFolderItem(arguments(0)).OpenAsPicture)
GetFolderItem(arguments(1)).SaveAsPicture(pixels.GammaFilter(Nil, 2.2).CopyPicture)
"""
FUNCTION = """
import os
import pathlib
import time
import tqx

def brighten(source, result):
    picture = tqx.PictureTQX.from_array(tqx.imread(source))
    tqx.imwrite(result, picture.GammaFilter(None, 2.2))

def die_once(source, result):
    mark = pathlib.Path(source + ".mark")
    if source.endswith("3.png") and not mark.exists():
        mark.touch()
        pathlib.Path(result).touch()
        os._exit(9)
    brighten(source, result)

def counted(source, result):
    with open(pathlib.Path(source).parent / "counts", "a") as file:
        file.write(pathlib.Path(source).name + "\\n")
    brighten(source, result)

def die(source, result):
    if source.endswith("3.png"):
        os._exit(9)
    brighten(source, result)

def die_writing(source, result):
    pathlib.Path(result).with_name("of another name").write_bytes(b"half")
    os._exit(9)

def half(source, result):
    pathlib.Path(result).write_bytes(b"half")
    raise ValueError("no more")

def tell(source, result):
    print(os.path.basename(source))
    brighten(source, result)

def wait(source, result):
    pathlib.Path(source + ".begun").touch()
    time.sleep(900)

def nothing(source, result):
    pass
"""


@pytest.fixture
def folder(tmp_path: pathlib.Path) -> pathlib.Path:
    for i in range(6):
        pixels = np.random.default_rng(i).integers(0, 256, (20 + i, 30, 3)).astype(np.uint8)
        tqx.imwrite(tmp_path / f"{i}.png", pixels)
    (tmp_path / "bright.rbs").write_text(SCRIPT)
    (tmp_path / "work.py").write_text(textwrap.dedent(FUNCTION))
    return tmp_path


def each(folder: pathlib.Path, *words: str, files: str = "[0-9].png") -> Any:
    sources = sorted(map(str, folder.glob(files)))
    command = [sys.executable, "-m", "tqx.cluster", "each", *words, *sources]
    return subprocess.run(command, cwd=folder, capture_output=True, text=True, timeout=900)


def brightened(source: pathlib.Path) -> Any:
    return np.asarray(tqx.PictureTQX.from_array(tqx.imread(source)).GammaFilter(None, 2.2))


def eventually(condition: Callable[[], bool]) -> bool:
    """Whether it comes true, sooner or later."""
    end = time.monotonic() + 300
    while not condition() and time.monotonic() < end:
        time.sleep(0.05)
    return condition()


def children() -> set[str]:
    """Processes that run the cluster's code."""
    found = set()
    for path in pathlib.Path("/proc").glob("[0-9]*/cmdline"):
        with contextlib.suppress(OSError):
            if b"tqx.cluster import _local" in path.read_bytes():
                found.add(path.parent.name)
    return found


def assert_all_bright(folder: pathlib.Path, out: pathlib.Path) -> None:
    names = sorted(path.name for path in folder.glob("*.png"))
    assert sorted(path.name for path in out.iterdir()) == names
    for name in names:
        assert np.array_equal(tqx.imread(out / name), brightened(folder / name))


def test_a_script_and_a_function_give_the_same(folder: pathlib.Path) -> None:
    for program in ("bright.rbs", "work.py:brighten"):
        out = folder / f"out of {program[:4]}"
        ended = each(folder, program, "--out", str(out))
        assert ended.returncode == 0, ended.stderr
        assert ended.stdout == "6 done, 0 skipped, 0 failed\n"
        assert_all_bright(folder, out)


def test_files_that_fail_are_named_and_the_others_finish(folder: pathlib.Path) -> None:
    (folder / "7.png").write_bytes(b"no picture")
    ended = each(folder, "bright.rbs", "--out", str(folder / "out"))
    assert ended.returncode == 1
    assert "7.png" in ended.stderr and "UnsupportedFormatException" in ended.stderr
    assert ended.stdout == "6 done, 0 skipped, 1 failed\n"
    (folder / "7.png").unlink()
    assert_all_bright(folder, folder / "out")


def test_a_worker_that_dies_costs_a_retry(folder: pathlib.Path) -> None:
    ended = each(folder, "work.py:die_once", "--out", str(folder / "out"))
    assert ended.returncode == 0, ended.stderr
    assert (folder / "3.png.mark").exists()
    assert_all_bright(folder, folder / "out")


def test_a_worker_killed_among_two_hundred_files_costs_retries_alone(folder: pathlib.Path) -> None:
    """Every result is whole, and no file but those that the worker had is worked on again."""
    from distributed import LocalCluster

    for i in range(6, 200):
        shutil.copy(folder / f"{i % 6}.png", folder / f"{i}.png")
    out = folder / "out"
    killed = threading.Event()

    def kill_in_the_middle(pid: int) -> None:
        while not out.exists() or len(list(out.iterdir())) < 60:
            time.sleep(0.01)
        os.kill(pid, signal.SIGKILL)
        killed.set()

    with LocalCluster(n_workers=2, threads_per_worker=1, dashboard_address=None) as cluster:
        worker = next(iter(cluster.workers.values()))
        threading.Thread(target=kill_in_the_middle, args=(worker.pid,), daemon=True).start()
        ended = each(
            folder, "work.py:counted", "--out", str(out), "--scheduler", cluster.scheduler_address, files="*.png"
        )
    assert killed.is_set()
    assert ended.returncode == 0, ended.stderr
    assert ended.stdout == "200 done, 0 skipped, 0 failed\n"
    assert_all_bright(folder, out)
    times = collections.Counter((folder / "counts").read_text().split())
    assert len(times) == 200 and max(times.values()) <= 2


def test_a_file_that_workers_die_of_fails_alone(folder: pathlib.Path) -> None:
    ended = each(folder, "work.py:die", "--out", str(folder / "out"))
    assert ended.returncode == 1
    assert "3.png: the worker that had it died" in ended.stderr
    assert ended.stdout == "5 done, 0 skipped, 1 failed\n"
    (folder / "3.png").unlink()
    assert_all_bright(folder, folder / "out")


def test_workers_end_with_a_command_that_is_killed(folder: pathlib.Path) -> None:
    before = children()
    command = [sys.executable, "-m", "tqx.cluster", "each", "work.py:wait", "--out", "out", "0.png", "1.png"]
    with subprocess.Popen(command, cwd=folder) as running:
        assert eventually(lambda: len(list(folder.glob("*.begun"))) == min(2, len(os.sched_getaffinity(0))))
        assert children() > before
        running.kill()
    assert eventually(lambda: children() <= before)


def test_modules_are_found_where_the_caller_finds_them(folder: pathlib.Path) -> None:
    """From Python, without a guard around the call: workers don't run the calling program anew."""
    code = """
        import pathlib, sys
        sys.path.insert(0, str(pathlib.Path("modules").absolute()))
        import tqx.cluster
        print(tqx.cluster.each("work:tell", ["0.png", "1.png"], "out"))
    """
    (folder / "modules").mkdir()
    (folder / "work.py").rename(folder / "modules" / "work.py")
    (folder / "call.py").write_text(textwrap.dedent(code))
    ended = subprocess.run([sys.executable, "call.py"], cwd=folder, capture_output=True, text=True, timeout=900)
    assert ended.stderr == ""
    lines = ended.stdout.splitlines()
    assert sorted(lines[:2]) == ["0.png", "1.png"]  # what the function prints
    assert lines[2:] == ["2 done, 0 skipped, 0 failed", "0"]


def test_no_half_result_is_left(folder: pathlib.Path) -> None:
    for function, why in (("half", "no more"), ("nothing", "no result was written")):
        ended = each(folder, f"work.py:{function}", "--out", str(folder / "out"), files="[01].png")
        assert ended.returncode == 1 and ended.stderr.count(why) == 2
        assert list((folder / "out").iterdir()) == []


def test_what_a_dead_worker_was_writing_is_removed(folder: pathlib.Path) -> None:
    """Whatever its name: a writer of image files has names of its own for what is not whole yet."""
    ended = each(folder, "work.py:die_writing", "--out", str(folder / "out"), files="[01].png")
    assert ended.returncode == 1 and ended.stderr.count("died") == 2
    assert list((folder / "out").iterdir()) == []


def test_what_is_done_is_left_out(folder: pathlib.Path) -> None:
    out = folder / "out"
    assert each(folder, "bright.rbs", "--out", str(out), files="[0-3].png").returncode == 0
    os.utime(folder / "2.png", (4e9, 4e9))
    ended = each(folder, "bright.rbs", "--out", str(out), "--resume")
    assert ended.stdout == "3 done, 3 skipped, 0 failed\n"


def test_what_can_not_begin_is_told(folder: pathlib.Path) -> None:
    (folder / "more").mkdir()
    (folder / "more" / "1.png").touch()
    for words, why in [
        (("none.rbs", "--out", "out"), "no such script"),
        (("work.py:none", "--out", "out"), "none"),
        (("no.such.module:f", "--out", "out"), "no"),
        (("bright.rbs", "--out", "work.py"), "work.py"),
        (("bright.rbs", "--out", "."), "overwritten by its own result"),
        (("bright.rbs", "--out", "out", "more/1.png"), "would both become"),
    ]:
        ended = each(folder, *words)
        assert ended.returncode == 2 and why in ended.stderr


def test_pieces_on_a_cluster_survive_a_worker(folder: pathlib.Path) -> None:
    """One of two workers is killed while pieces are blurred; the bytes are those of the whole."""
    code = """
        import os, signal, sys
        import dask.array as da
        import numpy as np
        import tqx, tqx.cluster
        from distributed import Client, LocalCluster, wait

        if __name__ == "__main__":
            pixels = np.random.default_rng(1).integers(0, 256, (900, 800, 3)).astype(np.uint8)
            with LocalCluster(n_workers=2, threads_per_worker=1, dashboard_address=None) as cluster, Client(cluster) as c:
                pieces = tqx.cluster.apply(da.from_array(pixels, chunks=(200, 170, 3)), "BoxBlurFilter", 9, 3)
                future = c.compute(pieces)
                os.kill(next(iter(cluster.workers.values())).pid, signal.SIGKILL)
                blurred = future.result(120)
            whole = tqx.PictureTQX.from_array(pixels).BoxBlurFilter(None, 9, 3)
            print(np.array_equal(blurred, whole))
    """
    (folder / "kill.py").write_text(textwrap.dedent(code))
    ended = subprocess.run([sys.executable, "kill.py"], cwd=folder, capture_output=True, text=True, timeout=900)
    assert ended.stdout == "True\n", ended.stderr


def test_a_cluster_that_is_running_is_used(folder: pathlib.Path) -> None:
    from distributed import LocalCluster

    out = folder / "out"
    with LocalCluster(n_workers=2, threads_per_worker=1, dashboard_address=None) as cluster:
        ended = each(folder, "work.py:brighten", "--out", str(out), "--scheduler", cluster.scheduler_address)
    assert ended.returncode == 0, ended.stderr
    assert_all_bright(folder, out)
