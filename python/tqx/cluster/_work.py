"""What a worker does with one file."""

from __future__ import annotations

import dataclasses
import functools
import importlib
import importlib.util
import os
import pathlib
import uuid
from collections.abc import Callable, Sequence
from typing import Any

from tqx import _native


class ScriptFailed(Exception):
    """A script ended with messages, or with a code other than 0."""


@dataclasses.dataclass(frozen=True)
class Task:
    """One file: what makes ``result`` of ``source``, by way of a file named after ``partial`` in the same folder."""

    program: str  # a script's path, or MODULE:FUNCTION
    source: str
    result: str
    partial: str


def is_function(program: str) -> bool:
    """Whether a program is MODULE:FUNCTION (a module's name or its file), and no script."""
    return ":" in program and not os.path.exists(program)


@functools.lru_cache(maxsize=8)
def load_function(program: str) -> Callable[[str, str], Any]:
    """The function that MODULE:FUNCTION names. Raises ImportError or AttributeError."""
    module_name, _, function = program.rpartition(":")
    if not module_name.endswith(".py"):
        return getattr(importlib.import_module(module_name), function)  # type: ignore[no-any-return]
    spec = importlib.util.spec_from_file_location(pathlib.Path(module_name).stem, module_name)
    if spec is None or spec.loader is None or not os.path.exists(module_name):
        raise ImportError(f"{module_name}: there is no such module")
    module = importlib.util.module_from_spec(spec)
    spec.loader.exec_module(module)
    return getattr(module, function)  # type: ignore[no-any-return]


def partials(tasks: Sequence[Task], folder: pathlib.Path) -> list[pathlib.Path]:
    """What attempts that did not end left in the folder."""
    names = {pathlib.Path(task.partial).stem for task in tasks}
    return [entry for entry in folder.iterdir() if entry.stem.rpartition("-")[0] in names]


def _run(task: Task, partial: str) -> None:
    if is_function(task.program):
        load_function(task.program)(task.source, partial)
        return
    code, _, messages = _native.run_script(task.program, [task.source, partial])
    if code != 0:
        raise ScriptFailed(messages.strip() or f"the script ended with code {code}")


def work(task: Task) -> None:
    """Makes the result whole, or not at all. Two attempts at a time don't meet."""
    path = pathlib.Path(task.partial)
    partial = path.with_stem(f"{path.stem}-{uuid.uuid4().hex[:8]}")
    try:
        _run(task, str(partial))
        if not partial.exists():
            raise FileNotFoundError("no result was written")
        os.replace(partial, task.result)
    finally:
        partial.unlink(missing_ok=True)
