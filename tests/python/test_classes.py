"""Classes made of records: overloads, properties, constants, conversions, exceptions."""

from __future__ import annotations

import json
import os
import pathlib
import subprocess
import sys
from typing import Any

import numpy as np
import pytest

import tqx
from tqx import _native

P = tqx.PictureTQX


def test_every_member_of_the_records_is_there() -> None:
    for record in json.loads(_native.records())["classes"]:
        made = tqx._made.get(record["name"])
        if made is None:
            continue
        kinds = ("methods", "sharedMethods", "properties", "constants")
        names = {member["name"] for kind in kinds for member in record[kind]} - {"Constructor"}
        assert names <= set(dir(made)), record["name"]


def test_constants_are_numbers_of_the_class() -> None:
    assert (P.ImageFormatRGBA, P.ScaleLanczos3, P.DitherCluster8Matrix) == (2, 3, 10)


def test_overloads_go_by_number_and_kind(photo: Any) -> None:
    assert photo.GammaFilter(None, 2.2).Width == 7
    assert photo.GammaFilter(None, 2.2, 1, 1.0).Width == 7
    photo.FillRectRGB(1, 2, 3)
    photo.FillRectRGB(tqx.Color(9, 8, 7), 255)
    assert np.asarray(photo)[0, 0].tolist() == [9, 8, 7]
    photo.FillRectRGB(0x010203)
    assert np.asarray(photo)[0, 0].tolist() == [1, 2, 3]


def test_keywords_are_parameters_in_any_case(photo: Any) -> None:
    blurred = photo.BoxBlurFilter(None, radius=1, ITERATIONS=2)
    assert np.array_equal(blurred, photo.BoxBlurFilter(None, 1, 2))
    with pytest.raises(TypeError, match="radios="):
        photo.BoxBlurFilter(None, radios=1)
    with pytest.raises(TypeError, match="no form"):
        photo.BoxBlurFilter(None, 1, Radius=1)


def test_left_out_arguments_are_the_defaults(photo: Any) -> None:
    picture = tqx.framework.Picture(3, 2, 32)
    assert P(picture).HasAlpha is False
    assert P(picture, True).HasAlpha is True
    assert P(picture, usealpha=True).HasAlpha is True


def test_no_form_names_what_there_is(photo: Any) -> None:
    with pytest.raises(TypeError, match=r"GammaFilter\(NoneType, str\)(.|\n)*gamma As Double"):
        photo.GammaFilter(None, "bright")
    with pytest.raises(TypeError, match="no form takes"):
        photo.GammaFilter(tqx.framework.MemoryBlock(3), 1.0)


@pytest.mark.parametrize("number", [2**31, -(2**31) - 1, 2**63, 10**30])
def test_numbers_out_of_range_are_refused(number: int) -> None:
    with pytest.raises(OverflowError, match="out of the range of Integer"):
        P(number, 1, 1)


@pytest.mark.parametrize("value", [1.0, "1", True, None, [1], object()])
def test_only_whole_numbers_are_integers(value: Any) -> None:
    with pytest.raises(TypeError):
        P(value, 1, 1)


def test_numbers_of_numpy_are_numbers(photo: Any) -> None:
    assert P(np.int64(3), np.uint8(2), np.int32(1)).Width == 3
    assert photo.GammaFilter(None, np.float32(2)).Valid
    assert P(tqx.framework.Picture(3, 2, 32), np.bool_(True)).HasAlpha


def test_arrays_are_any_sequence(photo: Any) -> None:
    table = list(range(255, -1, -1))
    for given in (table, tuple(table), np.array(table)):
        assert np.array_equal(photo.TransferFilter(None, given), 255 - np.asarray(photo))
    assert not np.asarray(photo.TransferFilter(None, [])).any()
    assert not np.asarray(photo.TransferFilter(None, None)).any()
    with pytest.raises(TypeError):
        photo.TransferFilter(None, [1, "2"])
    with pytest.raises(OverflowError):
        photo.TransferFilter(None, [2**40])


def test_shared_and_own_methods_of_a_name(photo: Any) -> None:
    assert P.CreatePictureTQX(3, 2, P.ImageFormatG).Width == 3
    assert photo.CreatePictureTQX(4, 2, P.ImageFormatG).Width == 4
    assert P.Clone(photo).Width == 7
    with pytest.raises(TypeError, match="needs a PictureTQX"):
        P.Clone(3)


def test_assignable_methods_are_indexed(photo: Any) -> None:
    photo.RowInFormat[1, P.ImageFormatG] = bytes(range(7))
    assert np.asarray(photo)[1, :, 0].tolist() == list(range(7))
    assert bytes(photo.RowInFormat[1, P.ImageFormatG]) == bytes(range(7))
    photo.Row[0] = photo.Row(1)
    assert np.array_equal(np.asarray(photo)[0], np.asarray(photo)[1])
    with pytest.raises(TypeError):
        del photo.Row[0]
    with pytest.raises(TypeError):
        photo.Row[0] = 3


def test_exceptions_of_the_plug_in_are_pythons(photo: Any) -> None:
    with pytest.raises(IndexError, match="Index is out of bounds") as caught:
        photo.Row(5)
    assert isinstance(caught.value, tqx.OutOfBoundsException)
    assert isinstance(caught.value, tqx.RuntimeException)
    assert caught.value.ErrorNumber == 0
    with pytest.raises(tqx.NilObjectException, match="Memoryblock is nil"):
        photo.Row[0] = None


def test_properties_are_read_and_written(photo: Any) -> None:
    photo.YieldTicks = 3
    assert photo.YieldTicks == 3
    with pytest.raises(AttributeError, match="only be read"):
        photo.Width = 3
    with pytest.raises(AttributeError, match="no attribute 'yieldticks'"):
        photo.yieldticks = 3
    with pytest.raises(TypeError, match="YieldTicks is Integer"):
        photo.YieldTicks = "3"
    with pytest.raises(OverflowError):
        photo.YieldTicks = 2**31
    with pytest.raises(AttributeError):
        del photo.YieldTicks


def test_an_object_is_one_object_of_python(photo: Any) -> None:
    clip = photo.ClipImage(0, 0, 2, 2)
    assert clip.Parent is photo
    assert photo.BoxBlurFilter(None, 1, 0) is photo


def test_refusals_are_none_and_explained(photo: Any) -> None:
    assert photo.RedChannel() is not None
    assert photo.GrayChannel() is None
    assert "GrayChannel gave Nil" in tqx.explain()
    assert P(3, 3, 99).Valid is False
    assert "ImageFormat 99" in tqx.explain()
    with tqx.explaining() as told:
        P(3, 3, 0).Invert()
    assert "Invert did nothing" in told[-1]


def test_explaining_survives_exceptions(photo: Any) -> None:
    with tqx.explaining() as told:
        with pytest.raises(IndexError):
            photo.Row(99)
        assert photo.GrayChannel() is None
    assert ["GrayChannel gave Nil" in sentence for sentence in told] == [True]


def test_texts_and_bytes(photo: Any) -> None:
    assert photo.ImageFormatString == "RGB"
    assert isinstance(photo.RowStringInFormat(0, P.ImageFormatRGB), bytes)
    assert photo.RowStringInFormat(0, P.ImageFormatScaling) is None


def test_documentation_has_declarations_and_meaning() -> None:
    assert "BoxBlurFilter(dest As PictureTQX, Radius As Double)" in P.BoxBlurFilter.__doc__
    assert "mean over squares" in P.BoxBlurFilter.__doc__
    assert "StampFilter" not in P.BoxBlurFilter.__doc__.split("\n\n", 1)[1]
    assert "pixels a row" in P.Width.__doc__
    assert "ImageFormat As Integer" in P.__doc__


def test_colors() -> None:
    color = tqx.Color(255, 128, 0)
    assert color == 0xFF8000 == tqx.Color(0xFF8000)
    assert (color.Red, color.Green, color.Blue) == (255, 128, 0)
    surface = tqx.framework.Picture(2, 2, 32).RGBSurface
    surface.Pixel[1, 1] = color
    assert isinstance(surface.Pixel(1, 1), tqx.Color) and surface.Pixel(1, 1) == color
    with pytest.raises(OverflowError):
        surface.Pixel[0, 0] = 2**24


def test_another_plug_in_can_be_named() -> None:
    code = "import tqx"
    environment = {**os.environ, "TQX_PLUGIN": "/nowhere/Other.so"}
    ended = subprocess.run([sys.executable, "-c", code], env=environment, capture_output=True, text=True)
    assert ended.returncode == 1 and "ImportError" in ended.stderr and "/nowhere/Other.so" in ended.stderr


def test_whole_numbers_above_int64_pass_both_ways() -> None:
    sample = pathlib.Path(os.environ["TQX_BUILD_DIR"]) / "tests/support/plugins/Sample.so"
    program = (
        "import sys, tqx\n"
        "tqx.load_plugin(sys.argv[1])\n"
        "sample = tqx.Sample()\n"
        "print(sample.NextWhole(5), sample.NextWhole(2**63 - 1), sample.NextWhole(2**64 - 2))\n"
        "for beyond in (2**64, -1):\n"
        "    try:\n"
        "        print(sample.NextWhole(beyond))\n"
        "    except OverflowError as error:\n"
        "        print(error)\n"
    )
    told = subprocess.run([sys.executable, "-c", program, str(sample)], capture_output=True, text=True)
    assert told.stdout.splitlines() == [
        f"6 {2**63} {2**64 - 1}",
        f"{2**64} is out of the range of UInt64",
        "-1 is out of the range of UInt64",
    ], told.stderr
