"""What a worker does with one file."""

from __future__ import annotations

import dataclasses
import functools
import importlib
import importlib.util
import os
import pathlib
import tempfile
from collections.abc import Callable
from typing import Any

from tqx import _native


class ScriptFailed(Exception):
    """A script ended with messages, or with a code other than 0."""


@dataclasses.dataclass(frozen=True)
class Task:
    """One file: what makes ``result`` of ``source``."""

    program: str  # a script's path, or MODULE:FUNCTION
    source: str
    result: str
    attempts: str  # a folder beside the result, for what is not whole yet; the whole run's


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


def _run(task: Task, result: str) -> None:
    if is_function(task.program):
        load_function(task.program)(task.source, result)
        return
    code, _, messages = _native.run_script(task.program, [task.source, result])
    if code != 0:
        raise ScriptFailed(messages.strip() or f"the script ended with code {code}")


def work(task: Task) -> None:
    """Makes the result whole, or not at all. Two attempts at a time don't meet: each has a folder of its own."""
    result = pathlib.Path(task.result)
    with tempfile.TemporaryDirectory(dir=task.attempts) as folder:
        attempt = pathlib.Path(folder) / result.name
        _run(task, str(attempt))
        if not attempt.exists():
            raise FileNotFoundError("no result was written")
        os.replace(attempt, result)
