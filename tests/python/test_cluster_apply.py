"""A picture worked on in pieces has the bytes of one call on the whole."""

from __future__ import annotations

import pickle
import random
import subprocess
import sys
from typing import Any

import dask
import dask.array as da
import numpy as np
import pytest

import tqx
from tqx import _native
from tqx.cluster import CannotBeCut, apply
from tqx.cluster import open as open_array

P = tqx.PictureTQX
FORMATS = [code for code in range(1, 22) if code != P.ImageFormatScaling]
CURVE = [(i * 7 + 3) % 300 - 20 for i in range(256)]
KERNEL = [1, 0, -2, 3, 1, 2, 300, 4, 0, 1, -1, 2, 5, 2, 1, 0, 1, 3, -4, 2, 1, 1, 0, 2, -1]
# Each member with its arguments, in ways that reach its edges.
CALLS: list[tuple[Any, ...]] = [
    ("GammaFilter", 2.2),
    ("GammaFilter", 2.2, 0.7),
    ("GammaFilter", 1.5, 2.5, 0.5),
    ("GammaFilter", 1.5, 2.5, 0.5, 3.0),
    ("GainFilter", 0.3, 0.6),
    ("TransferFilter", CURVE),
    ("TransferFilter", CURVE, CURVE[::-1], CURVE[50:], CURVE[:90]),
    ("SolarizeFilter",),
    ("Invert",),
    ("ApplyMatrix", KERNEL, 7, 0.125),
    ("ApplyMatrix", KERNEL),
    ("BoxBlurFilter", 0.5),
    ("BoxBlurFilter", 3),
    ("BoxBlurFilter", 1000),
    ("BoxBlurFilter", 1e9),
    ("BoxBlurFilter", -3.0),
    ("BoxBlurFilter", float("nan")),
    ("BoxBlurFilter", 2, 3),
    ("BoxBlurFilter", 2, 0),
    ("BoxBlurFractionalFilter", 7.4),
    ("StampFilter", 5.0, 0.4, 0.3, tqx.Color(200, 20, 3), tqx.Color(1, 250, 90)),
    ("DitherFilter", P.DitherCluster8Matrix, 3),
    ("DitherFilter", P.Dither90Halftone6x6Matrix, 2),
    ("DitherFilter", 99, 2),
    ("EngraveFilter", 3),
    ("EngraveFilter", -2),
    ("EngraveFilter", 500),
    ("NeonFilter",),
    ("HMirror",),
    ("VMirror",),
    ("Rotate180",),
    ("Rotate90",),
    ("Rotate90slow",),
    ("Rotate270",),
    ("Rotate270slow",),
    *(("DataStringInFormat", target) for target in (1, 2, 3, 4, 8, 9, 11, 12, 13, 16, 21)),
    ("ScaleFast", 23, 61),
    ("ScaleFast", 100, 7),
    *(("Scale", mode, 71, 13) for mode in range(1, 8)),
    *(("Scale", mode, 9, 90) for mode in range(1, 8)),
]


@pytest.fixture(autouse=True)
def computed_here() -> Any:
    """Pieces are computed in this process; the cluster has tests of its own."""
    with dask.config.set(scheduler="synchronous"):
        yield


def random_pixels(code: int, height: int, width: int, seed: int) -> np.ndarray[Any, Any]:
    shape = _native.shape_of(P(width, height, code))[0]
    return np.random.default_rng(seed).integers(0, 256, shape).astype(np.uint8)


def picture_of(pixels: np.ndarray[Any, Any], code: int) -> Any:
    picture = P(pixels.shape[1], pixels.shape[0], code)
    np.asarray(picture)[...] = pixels
    return picture


def on_the_whole(pixels: np.ndarray[Any, Any], code: int, member: str, *arguments: Any) -> np.ndarray[Any, Any]:
    """What one call gives."""
    picture = picture_of(pixels, code)
    if member in ("Invert", "HMirror", "VMirror"):
        getattr(picture, member)()
        return np.asarray(picture)
    if member == "ApplyMatrix":
        return np.asarray(picture.ApplyMatrix(P(picture.Width, picture.Height, code), *arguments))
    if member == "DataStringInFormat":
        size = P(1, 1, arguments[0]).PixelSize
        shape = pixels.shape[:2] + ((size,) if size > 1 else ())
        return np.frombuffer(picture.DataStringInFormat(*arguments), np.uint8).reshape(shape)
    if member in ("Scale", "ScaleFast"):
        result = P(*arguments[-2:], code)
        assert getattr(result, member)(picture, *([None] if member == "Scale" else []), *arguments)
        return np.asarray(result)
    return np.asarray(getattr(picture, member)(None, *arguments))


def cuts(total: int, count: int, chance: random.Random) -> tuple[int, ...]:
    """Odd places to cut at."""
    places = sorted(chance.sample(range(1, total), count - 1))
    return tuple(b - a for a, b in zip([0, *places], [*places, total]))


def cut_up(pixels: np.ndarray[Any, Any], rows: int, columns: int, chance: random.Random) -> Any:
    chunks = (cuts(pixels.shape[0], rows, chance), cuts(pixels.shape[1], columns, chance))
    return da.from_array(pixels, chunks=chunks + pixels.shape[2:])


@pytest.mark.parametrize("code", FORMATS)
def test_every_member_in_every_format(code: int) -> None:
    chance = random.Random(code)
    for number, (member, *arguments) in enumerate(CALLS):
        pixels = random_pixels(code, 37, 29, number)
        rows, columns = chance.choice([(1, 1), (2, 1), (1, 3), (2, 2), (3, 2)])
        pieces = apply(cut_up(pixels, rows, columns, chance), member, *arguments, image_format=code)
        whole = on_the_whole(pixels, code, member, *arguments)
        assert pieces.shape == whole.shape
        assert np.array_equal(pieces.compute(), whole), (member, arguments, pieces.chunks)


@pytest.mark.parametrize("rows, columns", [(1, 1), (1, 7), (7, 1), (3, 5), (10, 5), (5, 10)])
def test_up_to_fifty_pieces(rows: int, columns: int) -> None:
    chance = random.Random(rows * 100 + columns)
    for number, (member, *arguments) in enumerate(CALLS):
        code = FORMATS[(number * 3 + rows) % len(FORMATS)]
        pixels = random_pixels(code, 41, 33, number)
        pieces = apply(cut_up(pixels, rows, columns, chance), member, *arguments, image_format=code)
        assert np.array_equal(pieces.compute(), on_the_whole(pixels, code, member, *arguments)), (member, code)


@pytest.mark.parametrize("code", FORMATS)
def test_sharpening_takes_a_second_array(code: int) -> None:
    chance = random.Random(code)
    pixels = random_pixels(code, 31, 23, 1)
    picture = picture_of(pixels, code)
    blurred = picture.BoxBlurFilter(None, 2)
    pieces = cut_up(pixels, 3, 2, chance)
    other = apply(pieces, "BoxBlurFilter", 2, image_format=code)
    sharpened = apply(pieces, "UnsharpFilter", other, 0.6, 3, image_format=code)
    assert picture.UnsharpFilter(blurred, 0.6, 3)
    assert np.array_equal(sharpened.compute(), picture)


@pytest.mark.parametrize("code", [code for code in FORMATS if P(1, 1, code).IsRGB])
@pytest.mark.parametrize("low, high", [(60, 200), (0, 256), (90, 91)])
def test_levels_are_those_of_the_whole(code: int, low: int, high: int) -> None:
    shape = _native.shape_of(P(47, 39, code))[0]
    pixels = np.random.default_rng(code).integers(low, high, shape).astype(np.uint8)
    picture = picture_of(pixels, code)
    pieces = apply(cut_up(pixels, 3, 3, random.Random(code)), "AutoLevel", image_format=code)
    assert picture.AutoLevel()
    assert np.array_equal(pieces.compute(), picture)


@pytest.mark.parametrize("code", [code for code in FORMATS if not P(1, 1, code).HasAlpha])
def test_oil_without_alpha_is_cut(code: int) -> None:
    pixels = random_pixels(code, 23, 19, 5)
    pieces = apply(cut_up(pixels, 3, 2, random.Random(code)), "OilFilter", 16, 3, image_format=code)
    assert np.array_equal(pieces.compute(), on_the_whole(pixels, code, "OilFilter", 16, 3))


def test_what_can_not_be_cut_says_so() -> None:
    pixels = da.zeros((8, 8, 4), dtype=np.uint8, chunks=4)
    for member, arguments, why in [
        ("OilFilter", (8, 2), "counts alpha"),
        ("DiffuseFilter", (1,), "random"),
        ("Rotate", (30.0, 0, 0, 0, 0, 0), "shears"),
        ("CopyPixels", (), "has written"),
        ("AutoLevel", (0, 0, 3, 3), "whole pictures"),
    ]:
        with pytest.raises(CannotBeCut, match=why):
            apply(pixels, member, *arguments)


def test_refusals_come_before_anything_is_computed() -> None:
    pixels = da.zeros((8, 8, 3), dtype=np.uint8, chunks=4)
    for member, arguments, error in [
        ("DitherFilter", (1, 1), ValueError),
        ("ApplyMatrix", ([1, 2, 3],), ValueError),
        ("GammaFilter", ("bright",), TypeError),
        ("GammaFilter", (), TypeError),
        ("Scale", (99, 4, 4), ValueError),
        ("Scale", (1, 0, 4), ValueError),
        ("ScaleFast", (4,), TypeError),
        ("DataStringInFormat", (14,), ValueError),
        ("NoSuchFilter", (), ValueError),
        ("UnsharpFilter", (np.zeros((3, 3), np.uint8), 1.0, 1), ValueError),
    ]:
        with pytest.raises(error):
            apply(pixels, member, *arguments)
    with pytest.raises(ValueError, match="gray"):
        apply(pixels[:, :, 0], "AutoLevel")
    with pytest.raises(ValueError, match="channels"):
        apply(pixels, "SolarizeFilter", image_format=P.ImageFormatRGBA)
    for wrong in (pixels.astype(float), pixels[0, 0], da.zeros((0, 3), dtype=np.uint8)):
        with pytest.raises(TypeError):
            apply(wrong, "SolarizeFilter")


def test_files_are_opened_as_arrays(tmp_path: Any) -> None:
    pixels = np.random.default_rng(3).integers(0, 256, (70, 50, 3)).astype(np.uint8)
    (tmp_path / "a.raw").write_bytes(pixels.tobytes())
    tqx.imwrite(tmp_path / "a.tiff", pixels)
    raw = open_array(tmp_path / "a.raw", shape=pixels.shape, chunk=32)
    tiff = open_array(tmp_path / "a.tiff", chunk=32, scratch=tmp_path / "a.zarr")
    zarr = open_array(tmp_path / "a.zarr")
    for opened in (raw, tiff, zarr):
        assert opened.chunks[0] == (32, 32, 6)
        assert np.array_equal(opened.compute(), pixels)
    with pytest.raises(ValueError, match="scratch"):
        open_array(tmp_path / "a.tiff")
    with pytest.raises(ValueError, match="shorter"):
        open_array(tmp_path / "a.raw", shape=(71, 50, 3))


def test_workers_are_sent_no_pixels_of_a_file(tmp_path: Any) -> None:
    (tmp_path / "a.raw").write_bytes(bytes(1_000_000))
    raw = open_array(tmp_path / "a.raw", shape=(1000, 1000), chunk=500)
    assert len(pickle.dumps(dict(apply(raw, "BoxBlurFilter", 3).dask))) < 100_000


def test_a_part_of_a_raw_file_is_what_numpy_gives(tmp_path: Any) -> None:
    pixels = np.random.default_rng(4).integers(0, 256, (300, 40, 3)).astype(np.uint8)
    (tmp_path / "a.raw").write_bytes(pixels.tobytes())
    raw = open_array(tmp_path / "a.raw", shape=pixels.shape, chunk=300)
    for index in [
        np.s_[10:290, 3:5],
        np.s_[::-1, ::2],
        np.s_[250:1:-7],
        np.s_[5:5],
        np.s_[7, 3:9],
        np.s_[3:200, 4, 1],
        np.s_[[1, 200, 64], 2:5],
        np.s_[2:5, [1, 9]],
    ]:
        assert np.array_equal(raw[index].compute(scheduler="sync"), pixels[index])


def test_a_column_of_a_wide_raw_file_takes_no_memory_for_its_rows(tmp_path: Any) -> None:
    program = """
import resource, sys
from tqx.cluster import open
raw = open(sys.argv[1], shape=(4000, 60000), chunk=4000)[:, :100]
raw[:10].compute(scheduler="sync")
before = resource.getrusage(resource.RUSAGE_SELF).ru_maxrss
assert raw.compute(scheduler="sync").shape == (4000, 100)
print(resource.getrusage(resource.RUSAGE_SELF).ru_maxrss - before)
"""
    with open(tmp_path / "a.raw", "wb") as file:
        for _ in range(60):
            file.write(bytes(4_000_000))
    ran = subprocess.run([sys.executable, "-c", program, tmp_path / "a.raw"], capture_output=True, text=True)
    assert ran.returncode == 0, ran.stderr
    assert int(ran.stdout) < 50_000, "of the file's 240,000 KiB"
