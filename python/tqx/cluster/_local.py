"""A cluster of this machine for the time of one command, with a process a core.

The workers are forked from a process that has imported everything, while the command's own process imports what it
needs: both take most of a second, which then passes once. That process is a program of its own, so nothing is ever
forked beside threads; it replaces workers that die, and ends them when the command's end of its input is closed,
however the command ended.
"""

from __future__ import annotations

import asyncio
import contextlib
import json
import os
import select
import signal
import subprocess
import sys
import tempfile
import time
from collections.abc import Iterator
from typing import TYPE_CHECKING, Any

if TYPE_CHECKING:
    from distributed import Client

# Nobody looks at the engine's statistics of so short a life, which every process gathers all the time.
_QUIET = {
    "distributed.worker.profile.enabled": False,
    "distributed.admin.tick.interval": "200ms",
    "distributed.admin.system-monitor.interval": "5s",
    "distributed.admin.system-monitor.disk": False,
}

# Seconds after which the engine's senders gather what there is to send.
_SEND_INTERVAL = 0.005

# Seconds between the beginnings of a worker and of its successor: one that can't live must not keep a core busy.
_SHORTEST_LIFE = 0.5

# Modules are found where the command finds them.
_BOOT = "import json, sys; sys.path[:] = json.loads(sys.argv[1]); from tqx.cluster import _local; _local.keep_workers()"


@contextlib.contextmanager
def connect() -> Iterator[Client]:
    """A client of a new cluster, whose workers come as they are ready."""
    with tempfile.TemporaryDirectory(prefix="tqx-cluster-") as folder, _keeper() as keeper:
        import dask
        from distributed import Client, LocalCluster

        with dask.config.set(_QUIET), LocalCluster(
            n_workers=0,
            processes=True,
            dashboard_address=None,
            scheduler_kwargs={"dashboard_address": ":0"},  # what it shows by HTTP all the same stands on any port
            silence_logs=50,
        ) as cluster:
            order = {"scheduler": cluster.scheduler_address, "count": len(os.sched_getaffinity(0)), "folder": folder}
            keeper.stdin.write(json.dumps(order).encode() + b"\n")
            keeper.stdin.flush()
            with Client(cluster) as client:
                try:
                    yield client
                finally:
                    _end(keeper)
            # The engine's senders look once more after their last message, and complain if they can't.
            cluster.sync(asyncio.sleep, 4 * _SEND_INTERVAL)


@contextlib.contextmanager
def _keeper() -> Iterator[Any]:
    """The process that has the workers."""
    command = [sys.executable, "-c", _BOOT, json.dumps(sys.path)]
    with subprocess.Popen(command, stdin=subprocess.PIPE) as keeper:
        try:
            yield keeper
        finally:
            _end(keeper)


def _end(keeper: Any) -> None:
    """Ends the workers; afterwards none of them writes any more."""
    keeper.stdin.close()
    keeper.wait()


# --- In the process that has the workers ----------------------------------------------------------


def keep_workers() -> None:
    """Forks the workers that a line of standard input tells of, and anew when one dies, until the input ends."""
    signal.signal(signal.SIGINT, signal.SIG_IGN)  # a terminal sends it to all; the command ends the others
    sys.stdout.reconfigure(line_buffering=True)  # type: ignore[attr-defined]  # nothing is flushed when they are ended
    import dask
    import distributed.worker  # noqa: F401

    from . import _work  # noqa: F401

    line = sys.stdin.buffer.readline()
    if not line:
        return
    order = json.loads(line)
    dask.config.set(_QUIET)
    workers = dict(_forked(order) for _ in range(order["count"]))
    while sys.stdin not in (ended := select.select([sys.stdin, *workers], [], [])[0]):
        for descriptor in ended:
            process, begun = workers.pop(descriptor)
            os.waitpid(process, 0)
            os.close(descriptor)
            time.sleep(max(0.0, begun + _SHORTEST_LIFE - time.monotonic()))
            workers.update([_forked(order)])
    for process, _ in workers.values():
        os.kill(process, signal.SIGKILL)
    for process, _ in workers.values():
        os.waitpid(process, 0)


def _forked(order: dict[str, Any]) -> tuple[int, tuple[int, float]]:
    """A new worker: a descriptor that tells of its end, the process, and when it began."""
    process = os.fork()
    if process == 0:
        with open(os.devnull) as nothing:
            os.dup2(nothing.fileno(), sys.stdin.fileno())
        try:
            asyncio.run(_work_for(order))
        finally:
            os._exit(0)
    return os.pidfd_open(process), (process, time.monotonic())


async def _work_for(order: dict[str, Any]) -> None:
    from distributed import Worker

    async with Worker(
        order["scheduler"], nthreads=1, memory_limit=0, local_directory=order["folder"], silence_logs=50
    ) as worker:
        await worker.finished()
