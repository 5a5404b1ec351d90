"""The lines of Python in README.md."""

from __future__ import annotations

import os
import pathlib
import re
import shutil

import numpy
import pytest

import tqx

SOURCE = pathlib.Path(os.environ["TQX_SOURCE_DIR"])


def test_the_lines_make_every_fourth_row_darker(tmp_path: pathlib.Path, monkeypatch: pytest.MonkeyPatch) -> None:
    code = re.search(r"```python\n(.*?)```", (SOURCE / "README.md").read_text(encoding="utf-8"), re.S)
    assert code is not None
    shutil.copy(SOURCE / "examples/photos/seeds.jpg", tmp_path / "photo.jpg")
    monkeypatch.chdir(tmp_path)
    names: dict[str, object] = {}
    exec(code[1], names)
    soft = tqx.PictureTQX.from_array(tqx.imread("photo.jpg")).BoxBlurFilter(None, 6, 3)
    plain, darker = numpy.asarray(soft), numpy.asarray(names["soft"])
    assert (darker[::4] == plain[::4] // 2).all() and (darker[1::4] == plain[1::4]).all()
    assert tqx.imread("soft.jpg").shape == plain.shape
