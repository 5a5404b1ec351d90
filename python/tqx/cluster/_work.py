"""What a worker does with one file."""

from __future__ import annotations

import dataclasses
import functools
import importlib
import importlib.util
import os
import pathlib
from collections.abc import Callable
from typing import Any

from tqx import _native


class ScriptFailed(Exception):
    """A script ended with messages, or with a code other than 0."""


@dataclasses.dataclass(frozen=True)
class Task:
    """One file: what makes ``result`` of ``source``, by way of ``partial`` in the same folder."""

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


def _run(task: Task) -> None:
    if is_function(task.program):
        load_function(task.program)(task.source, task.partial)
        return
    code, _, messages = _native.run_script(task.program, [task.source, task.partial])
    if code != 0:
        raise ScriptFailed(messages.strip() or f"the script ended with code {code}")


def work(task: Task) -> None:
    """Makes the result whole, or not at all."""
    try:
        _run(task)
        if not os.path.exists(task.partial):
            raise FileNotFoundError("no result was written")
        os.replace(task.partial, task.result)
    finally:
        pathlib.Path(task.partial).unlink(missing_ok=True)
