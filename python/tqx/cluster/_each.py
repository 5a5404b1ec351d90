"""A script or a function for each of many files."""

from __future__ import annotations

import collections
import contextlib
import os
import pathlib
import shutil
import sys
import time
import uuid
from collections.abc import Iterator, Sequence
from typing import TYPE_CHECKING, Any, TextIO

from . import _local, _work

if TYPE_CHECKING:
    from distributed import Client

# How often a file that was lost is begun by itself.
_ALONE = 3
# Files at a time for each thread: the next one waits at the worker when one is done.
_AT_A_TIME = 2
# Seconds for which the number of the cluster's threads is taken as known.
_ASK_AGAIN = 0.5


class UsageError(Exception):
    """What was asked for can't be begun."""


def plan(program: str, sources: Sequence[str], out: pathlib.Path, suffix: str | None) -> list[_work.Task]:
    """A task for each source. Two sources with one result, or a source that is its own result, are refused."""
    attempts = str(out / f".tqx-{uuid.uuid4().hex[:8]}")
    tasks: dict[pathlib.Path, _work.Task] = {}
    for source in sources:
        path = pathlib.Path(source).absolute()
        result = out / (path.name if suffix is None else path.stem + suffix)
        if result in tasks:
            raise UsageError(f"{source} and {tasks[result].source} would both become {result}")
        if result == path:
            raise UsageError(f"{source} would be overwritten by its own result")
        tasks[result] = _work.Task(program, str(path), str(result), attempts)
    return list(tasks.values())


def is_done(task: _work.Task) -> bool:
    """Whether the result is there, and newer than the source and the program."""
    try:
        made = os.stat(task.result).st_mtime_ns
        program = task.program.rpartition(":")[0] if _work.is_function(task.program) else task.program
        origins = [task.source] + ([program] if os.path.exists(program) else [])
        return all(os.stat(path).st_mtime_ns <= made for path in origins)
    except OSError:
        return False


@contextlib.contextmanager
def connect(scheduler: str | None) -> Iterator[Client]:
    """A client of the scheduler at an address, or of a cluster of this machine with a process a core."""
    if not scheduler:
        with _local.connect() as client:
            yield client
        return
    from distributed import Client

    with Client(scheduler) as client:
        yield client


class Progress:
    """A bar on a terminal; elsewhere nothing."""

    def __init__(self, total: int, stream: TextIO) -> None:
        self.total, self.done, self.failed, self.stream = total, 0, 0, stream

    def step(self, failed: bool) -> None:
        """One more file has ended."""
        self.done += 1
        self.failed += failed
        if self.stream.isatty():
            filled = 30 * self.done // self.total
            failures = f", {self.failed} failed" if self.failed else ""
            bar = "#" * filled + "." * (30 - filled)
            self.stream.write(f"\r[{bar}] {self.done}/{self.total}{failures} ")
            self.stream.flush()

    def end(self) -> None:
        """The bar's line is over."""
        if self.stream.isatty():
            self.stream.write("\n")


def _failure(error: BaseException) -> str:
    if type(error).__name__ == "KilledWorker":
        return "the worker that had it died, more than once"
    return f"{type(error).__name__}: {error}" if not isinstance(error, _work.ScriptFailed) else str(error)


def _was_lost(future: Any) -> bool:
    """Whether a task has no end of its own: workers died with it, or the scheduler forgot it when one did."""
    if future.status == "error":
        return type(future.exception()).__name__ == "KilledWorker"
    return bool(future.status != "finished")


class _Run:
    """Tasks under way, and how they ended."""

    def __init__(self, client: Client, progress: Progress) -> None:
        self.client, self.progress = client, progress
        self.failures: dict[str, str] = {}
        self.suspects: list[_work.Task] = []  # workers died while they had these
        self.threads, self.asked = 1, -_ASK_AGAIN

    def at_a_time(self) -> int:
        """How many files may be under way: the cluster may grow and shrink."""
        if time.monotonic() >= self.asked + _ASK_AGAIN:
            self.threads = max(sum(self.client.nthreads().values()), 1)
            self.asked = time.monotonic()
        return _AT_A_TIME * self.threads

    def begin(self, task: _work.Task) -> Any:
        return self.client.submit(_work.work, task, pure=False)

    def end(self, task: _work.Task, future: Any) -> None:
        error = future.exception() if future.status == "error" else None
        if error is None and future.status != "finished":
            error = RuntimeError("the cluster lost it")
        if error is not None:
            self.failures[task.source] = _failure(error)
        self.progress.step(error is not None)

    def together(self, tasks: Sequence[_work.Task]) -> None:
        """All of them, a few at a time. Those that workers died of are left aside."""
        from distributed import as_completed

        waiting = collections.deque(tasks)
        running: dict[Any, _work.Task] = {}
        ended = as_completed()
        while waiting or running:
            while waiting and len(running) < self.at_a_time():
                task = waiting.popleft()
                future = self.begin(task)
                running[future] = task
                ended.add(future)
            future = next(ended)
            task = running.pop(future)
            if _was_lost(future):
                self.suspects.append(task)
            else:
                self.end(task, future)

    def alone(self, task: _work.Task) -> None:
        """One with nothing beside it, so that a death is its own."""
        from distributed import wait

        for _ in range(_ALONE):
            future = self.begin(task)
            wait(future)
            if future.status in ("finished", "error"):
                break
        self.end(task, future)


def run_all(client: Client, tasks: Sequence[_work.Task], progress: Progress) -> dict[str, str]:
    """Runs the tasks. Gives what went wrong, by source, in the order of the tasks.

    The scheduler begins the files of a worker that died anew, and gives those up that it saw several die with. Among
    them may be one that only waited there: each of them is tried once more by itself.
    """
    run = _Run(client, progress)
    run.together(tasks)
    for task in run.suspects:
        run.alone(task)
    return {task.source: run.failures[task.source] for task in tasks if task.source in run.failures}


def each(
    program: str,
    sources: Sequence[str],
    out: str,
    *,
    scheduler: str | None = None,
    resume: bool = False,
    suffix: str | None = None,
) -> int:
    """Runs a script, or a function(source, result) named MODULE:FUNCTION or FILE.py:FUNCTION, for each source.

    Results go to the folder ``out`` under their sources' names, with ``suffix`` as the extension if it is given;
    each is written whole or not at all. ``scheduler`` is the address of a running cluster, else there is one of this
    machine with a process a core. With ``resume`` sources whose results are there and newer are left out.

    What failed is named on standard error. Gives 0, or 1 when something failed; raises UsageError for what can't be
    begun.
    """
    program = _checked(program)
    folder = pathlib.Path(out).absolute()
    try:
        folder.mkdir(parents=True, exist_ok=True)
    except OSError as error:
        raise UsageError(f"{out}: no folder can be made of it: {error.strerror}") from None
    tasks = plan(program, sources, folder, suffix)
    left = [task for task in tasks if not (resume and is_done(task))]
    failures: dict[str, str] = {}
    if left:
        progress = Progress(len(left), sys.stderr)
        try:
            os.mkdir(left[0].attempts)
        except OSError as error:
            raise UsageError(f"{out}: nothing can be written there: {error.strerror}") from None
        try:
            with connect(scheduler) as client:
                failures = run_all(client, left, progress)
        finally:
            shutil.rmtree(left[0].attempts, ignore_errors=True)  # with what workers that died left there
            progress.end()
    for source, why in failures.items():
        print(f"{source}: {why}", file=sys.stderr)
    print(f"{len(left) - len(failures)} done, {len(tasks) - len(left)} skipped, {len(failures)} failed")
    return 1 if failures else 0


def _checked(program: str) -> str:
    """The program with an absolute path, if it can be found."""
    if _work.is_function(program):
        module, _, function = program.rpartition(":")
        named = f"{pathlib.Path(module).absolute()}:{function}" if module.endswith(".py") else program
        try:
            _work.load_function(named)
        except (ImportError, AttributeError) as error:
            raise UsageError(str(error)) from None
        return named
    if not os.path.isfile(program):
        raise UsageError(f"{program}: there is no such script; a function is MODULE:FUNCTION")
    return str(pathlib.Path(program).absolute())
