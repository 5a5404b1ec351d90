"""The stub that the build writes, as editors and mypy use it."""

from __future__ import annotations

import os
import pathlib
import re
import subprocess
import sys

import tqx

HERE = pathlib.Path(__file__).parent
PACKAGE = pathlib.Path(tqx.__file__).parent


def run_mypy(cache: pathlib.Path, *paths: pathlib.Path, strict: bool = True) -> str:
    options = ["--cache-dir", str(cache), "--no-error-summary"] + (["--strict"] if strict else [])
    environment = {**os.environ, "MYPYPATH": str(PACKAGE.parent)}
    environment.pop("PYTHONPATH", None)
    words = [sys.executable, "-m", "mypy", *options, *map(str, paths)]
    return subprocess.run(words, capture_output=True, text=True, env=environment).stdout


def test_a_program_is_checked_as_its_lines_say(tmp_path: pathlib.Path) -> None:
    program = HERE / "typed_program.py"
    expected = {
        (number, kind)
        for number, line in enumerate(program.read_text().splitlines(), 1)
        for kind in re.findall(r"# error: ([\w-]+)", line)
    }
    told = run_mypy(tmp_path, program)
    found = {(int(line), kind) for line, kind in re.findall(r":(\d+): error: .*\[([\w-]+)\]", told)}
    assert found == expected, told


def test_the_stub_itself_is_sound(tmp_path: pathlib.Path) -> None:
    told = run_mypy(tmp_path, PACKAGE / "__init__.pyi", PACKAGE / "framework.pyi")
    assert told == ""


def test_the_package_itself_is_sound(tmp_path: pathlib.Path) -> None:
    source = pathlib.Path(os.environ["TQX_SOURCE_DIR"])
    words = ["--config-file", str(source / "pyproject.toml"), "--cache-dir", str(tmp_path), "--no-error-summary"]
    told = subprocess.run(
        [sys.executable, "-m", "mypy", *words, "tqx"], capture_output=True, text=True, cwd=source / "python"
    )
    assert (told.returncode, told.stdout + told.stderr) == (0, "")


def test_the_stub_has_every_member() -> None:
    text = (PACKAGE / "__init__.pyi").read_text()
    for name in dir(tqx.PictureTQX):
        if not name.startswith("_"):
            assert re.search(rf"\b{name}\b", text), name
