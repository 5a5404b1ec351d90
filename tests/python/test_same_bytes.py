"""A member gives from Python what it gives from a script, for every member of the records."""

from __future__ import annotations

import os
import pathlib
import subprocess
import sys

import same_bytes


def test_every_member_gives_the_bytes_that_a_script_gets(tmp_path: pathlib.Path) -> None:
    program = tmp_path / "all.rbs"
    program.write_text(same_bytes.script())
    command = [os.environ["TQX_COMMAND"], "--plugin", os.environ["TQX_PLUGIN"], "run", str(program)]
    of_script = subprocess.run(command, capture_output=True, text=True)
    assert of_script.returncode == 0, of_script.stderr
    of_python = subprocess.run([sys.executable, same_bytes.__file__], capture_output=True, text=True)
    assert of_python.returncode == 0, of_python.stderr
    expected, given = of_script.stdout.splitlines(), of_python.stdout.splitlines()
    assert len(expected) == len(same_bytes.cases()) * len(same_bytes.FORMATS)
    differing = [(a, b) for a, b in zip(expected, given) if a != b]
    assert not differing and len(given) == len(expected), differing[:3]
