"""Every program of examples/python runs, and each begins with what it shows."""

from __future__ import annotations

import os
import pathlib
import subprocess
import sys

import numpy as np
import pytest

import tqx

EXAMPLES = pathlib.Path(os.environ["TQX_SOURCE_DIR"]) / "examples" / "python"
PHOTO = EXAMPLES.parent / "photos" / "seeds.jpg"


def run(name: str, *words: object) -> str:
    command = [sys.executable, str(EXAMPLES / name), *map(str, words)]
    ended = subprocess.run(command, capture_output=True, text=True, timeout=900)
    assert ended.returncode == 0, ended.stderr
    return ended.stdout


def test_each_begins_with_what_it_shows() -> None:
    programs = sorted(EXAMPLES.glob("*.py"))
    assert len(programs) == 5
    for program in programs:
        text = program.read_text()
        assert text.startswith('"""') and f"python3 {program.name} " in text


def test_brighten(tmp_path: pathlib.Path) -> None:
    run("brighten.py", PHOTO, tmp_path / "a.png")
    assert tqx.imread(tmp_path / "a.png").mean() > tqx.imread(PHOTO).mean() + 5


def test_contact_sheet(tmp_path: pathlib.Path) -> None:
    pytest.importorskip("PIL.Image")
    assert run("contact_sheet.py", tmp_path / "a.png", *[PHOTO] * 5).startswith("5 photographs on 680 x 368")
    assert tqx.imread(tmp_path / "a.png").shape == (368, 680, 3)


def test_factory(tmp_path: pathlib.Path) -> None:
    tqx.imwrite(tmp_path / "large.png", np.zeros((1000, 1100, 3), np.uint8))
    assert run("factory.py", tmp_path / "large.png", tmp_path / "a.png") == "1100 x 1000, 1 in files\n"
    assert run("factory.py", PHOTO, tmp_path / "b.png").endswith(", 0 in files\n")


def test_folder_on_a_cluster(tmp_path: pathlib.Path) -> None:
    (tmp_path / "photos").mkdir()
    for i in range(3):
        (tmp_path / "photos" / f"{i}.jpg").write_bytes(PHOTO.read_bytes())
    told = run("folder_on_a_cluster.py", tmp_path / "photos", tmp_path / "out")
    assert told == "3 done, 0 skipped, 0 failed\n"
    assert len(list((tmp_path / "out").iterdir())) == 3


def test_huge_zarr(tmp_path: pathlib.Path) -> None:
    da = pytest.importorskip("dask.array")
    pixels = np.random.default_rng(1).integers(0, 256, (300, 400, 3)).astype(np.uint8)
    da.from_array(pixels, chunks=(128, 128, 3)).to_zarr(str(tmp_path / "a.zarr"))
    told = run("huge_zarr.py", tmp_path / "a.zarr", tmp_path / "b.zarr")
    assert told == "400 x 300 pixels in 12 pieces\n"
    whole = tqx.PictureTQX.from_array(pixels).BoxBlurFilter(None, 5).GammaFilter(None, 1.8)
    assert np.array_equal(da.from_zarr(str(tmp_path / "b.zarr")).compute(), whole)
