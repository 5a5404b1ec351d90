"""Arrays of pictures and pictures around arrays."""

from __future__ import annotations

import gc
import pathlib
from typing import Any

import numpy as np
import pytest
from conftest import numbered

import tqx

P = tqx.PictureTQX
FORMATS = [code for code in range(1, 22) if code != P.ImageFormatScaling]


@pytest.mark.parametrize("code", FORMATS)
def test_an_array_shows_the_bytes_of_the_format(code: int) -> None:
    picture = P(5, 3, code)
    for y in range(3):
        picture.Row[y] = bytes((y * 64 + x) % 251 for x in range(picture.RowSize))
    pixels = np.asarray(picture)
    for y in range(3):
        row = np.frombuffer(bytes(picture.Row(y)), np.uint8)[: 5 * picture.PixelSize].reshape(5, picture.PixelSize)
        shown = row[:, picture.GrayOffset] if pixels.ndim == 2 else row
        assert np.array_equal(pixels[y], shown)


def test_an_array_is_live_both_ways(photo: Any) -> None:
    pixels = np.asarray(photo)
    assert pixels.shape == (5, 7, 3) and pixels.strides == (64, 3, 1) and pixels.flags.writeable
    pixels[2, 3] = (1, 2, 3)
    assert photo.RowStringInFormat(2, P.ImageFormatRGB)[9:12] == b"\1\2\3"
    photo.FillRectRGB(3, 2, 1)
    assert pixels[4, 6].tolist() == [3, 2, 1]


def test_views_show_their_pixels(photo: Any) -> None:
    pixels = np.asarray(photo)
    assert np.array_equal(np.asarray(photo.ClipImage(2, 1, 3, 2)), pixels[1:3, 2:5])
    assert np.array_equal(np.asarray(photo.MirroredView()), pixels[::-1])
    assert np.asarray(photo.MirroredView()).strides[0] == -64
    assert np.array_equal(np.asarray(photo.GreenChannel()), pixels[:, :, 1])
    assert np.array_equal(np.asarray(photo.ClipImage(1, 1, 4, 3).MirroredView().BlueChannel()), pixels[3:0:-1, 1:5, 2])
    wide = numbered(P(4, 3, P.ImageFormatXBGR))
    assert np.array_equal(np.asarray(wide.RGBChannels()), np.asarray(wide)[:, :, 1:])


def test_the_intermediate_of_scaling_is_floats(photo: Any) -> None:
    temp = P(3, 5, P.ImageFormatScaling)
    assert P(3, 2, P.ImageFormatRGB).Scale(photo, temp, P.ScaleTriangle, 3, 2)
    pixels = np.asarray(temp)
    assert pixels.shape == (5, 3, 4) and pixels.dtype == np.float32 and pixels[:, :, :3].all()


def test_an_array_keeps_its_picture(photo: Any) -> None:
    pixels = np.asarray(P(50, 50, P.ImageFormatRGB).ClipImage(1, 1, 9, 9).RedChannel())
    gc.collect()
    pixels[...] = 7
    assert pixels.sum() == 7 * 81


def test_bytes_that_arrays_look_at_can_not_be_freed(photo: Any) -> None:
    clip = photo.ClipImage(1, 1, 3, 3)
    pixels = np.asarray(clip)
    for picture in (clip, photo):
        with pytest.raises(BufferError, match="arrays look at"):
            picture.Close()
        with pytest.raises(BufferError, match="arrays look at"):
            picture.__init__(1, 1, 1)
    assert pixels.shape == (3, 3, 3)
    del pixels
    photo.Close()


def test_what_has_no_pixels_is_refused(photo: Any) -> None:
    photo.Close()
    for picture, why in ((photo, "closed"), (P(1, 1, 99), "not valid")):
        with pytest.raises(BufferError, match=why):
            np.asarray(picture)
    with pytest.raises(BufferError):
        memoryview(tqx.PictureFactoryTQX())


def test_empty_pictures_are_empty_arrays() -> None:
    assert np.asarray(P(0, 4, P.ImageFormatRGB)).shape == (4, 0, 3)
    assert np.asarray(P(4, 0, P.ImageFormatG)).shape == (0, 4)
    assert np.asarray(P(9, 9, P.ImageFormatG).ClipImage(20, 0, 5, 5)).size == 0


def test_a_wrongly_described_block_shows_nothing_beyond_it() -> None:
    block = tqx.framework.MemoryBlock(64)
    with pytest.raises(BufferError, match="beyond the memory block"):
        np.asarray(P(block, 64, 2, P.ImageFormatG, 64))
    assert np.asarray(P(block, 32, 2, P.ImageFormatG, 32)).shape == (2, 32)


def test_mapped_pictures_are_walked(tmp_path: pathlib.Path) -> None:
    mapped = P(50, 40, P.ImageFormatBGRA, 1 << 20, tmp_path / "scratch")
    assert mapped.IsMapping
    with pytest.raises(BufferError, match=r"rows\(\) walks them"):
        np.asarray(mapped)
    for y, row in enumerate(mapped.rows(writable=True)):
        row[...] = y
    assert [int(row[0, 0]) for row in mapped.rows()] == list(range(40))
    upright = np.stack(list(mapped.rows()))
    assert np.array_equal(np.stack(list(mapped.MirroredView().rows())), upright[::-1])
    assert mapped.tobytes() == upright.tobytes()
    mapped.Close()
    assert list(tmp_path.iterdir()) == []


def test_rows_of_a_view_in_memory(photo: Any) -> None:
    pixels = np.asarray(photo)
    assert np.array_equal(np.stack(list(photo.GreenChannel().rows())), pixels[:, :, 1])
    for row in photo.BlueChannel().rows(writable=True):
        row[...] = 5
    assert (pixels[:, :, 2] == 5).all()


def test_memory_blocks_show_their_bytes() -> None:
    block = tqx.framework.MemoryBlock(4)
    np.asarray(block)[...] = (1, 2, 3, 4)
    assert bytes(block) == b"\1\2\3\4" and block.Byte(2) == 3


# --- Pictures around arrays ---------------------------------------------------------------------


@pytest.mark.parametrize("shape", [(4, 5), (4, 5, 2), (4, 5, 3), (4, 5, 4)])
def test_an_array_is_wrapped_in_place(shape: tuple[int, ...]) -> None:
    array = np.arange(np.prod(shape), dtype=np.uint8).reshape(shape)
    picture = P.from_array(array)
    assert np.array_equal(np.asarray(picture), array)
    picture.FillRect(0, 0, 5, 4, 9)
    picture.ClearRect(0, 0, 1, 1)
    assert array[0, 0].sum() == 0 and array[1:].any()


def test_strides_that_fit_are_wrapped() -> None:
    array = np.arange(600, dtype=np.uint8).reshape(10, 20, 3)
    for part in (array[2:5], array[:, 3:9], array[::-1], array[::2], array[5:1:-2, 1:4]):
        picture = P.from_array(part)
        assert np.array_equal(np.asarray(picture), part)
        np.asarray(picture)[0, 0] = 200
        assert part[0, 0].tolist() == [200] * 3


def test_others_are_copied_when_asked() -> None:
    array = np.arange(600, dtype=np.uint8).reshape(10, 20, 3)
    frozen = array.copy()
    frozen.flags.writeable = False
    for part in (array[:, ::2], array[:, ::-1], array[:, :, ::-1], array.transpose(1, 0, 2), frozen):
        with pytest.raises(ValueError, match="copy=True"):
            P.from_array(part)
        assert np.array_equal(np.asarray(P.from_array(part, copy=True)), part)


def test_arrays_of_other_kinds_are_refused() -> None:
    with pytest.raises(TypeError, match="uint8"):
        P.from_array(np.zeros((2, 2), np.int32))
    for shape in ((3,), (2, 2, 5), (2, 2, 2, 2)):
        with pytest.raises(ValueError, match="is needed"):
            P.from_array(np.zeros(shape, np.uint8))


def test_a_picture_keeps_its_array() -> None:
    picture = P.from_array(np.full((30, 30), 7, np.uint8))
    view = picture.ClipImage(3, 3, 4, 4)
    del picture
    gc.collect()
    assert (np.asarray(view) == 7).all()


def test_pillow_takes_pictures(photo: Any) -> None:
    image = pytest.importorskip("PIL.Image")
    assert np.array_equal(np.asarray(image.fromarray(photo)), np.asarray(photo))
    assert np.array_equal(np.asarray(image.fromarray(photo.MirroredView())), np.asarray(photo)[::-1])
    wrapped = P.from_array(np.asarray(image.new("RGB", (3, 2), (1, 2, 3))), copy=True)
    assert np.asarray(wrapped)[1, 2].tolist() == [1, 2, 3]


# --- Files --------------------------------------------------------------------------------------


@pytest.mark.parametrize("channels", [1, 2, 3, 4])
def test_files_come_back_as_written(tmp_path: pathlib.Path, channels: int) -> None:
    shape = (4, 6) if channels == 1 else (4, 6, channels)
    array = (np.arange(np.prod(shape)) * 7 % 256).astype(np.uint8).reshape(shape)
    tqx.imwrite(tmp_path / "a.png", array)
    assert np.array_equal(tqx.imread(tmp_path / "a.png"), array)


def test_pictures_are_written_in_the_order_of_files(tmp_path: pathlib.Path) -> None:
    picture = numbered(P(4, 3, P.ImageFormatABGR))
    tqx.imwrite(tmp_path / "a.png", picture)
    assert np.array_equal(tqx.imread(tmp_path / "a.png"), np.asarray(picture)[:, :, ::-1])


def test_files_that_can_not_be_read_or_written(tmp_path: pathlib.Path) -> None:
    with pytest.raises(FileNotFoundError):
        tqx.imread(tmp_path / "none.png")
    (tmp_path / "bad.png").write_bytes(b"no picture")
    with pytest.raises(tqx.UnsupportedFormatException, match="bad.png"):
        tqx.imread(tmp_path / "bad.png")
    with pytest.raises(OSError):
        tqx.imwrite(tmp_path / "no" / "a.png", np.zeros((2, 2), np.uint8))
    with pytest.raises(TypeError):
        tqx.imwrite(tmp_path / "a.png", np.zeros((2, 2)))
    with pytest.raises(ValueError):
        tqx.imwrite(tmp_path / "a.png", np.zeros((2, 2, 7), np.uint8))
    assert [file.name for file in tmp_path.iterdir()] == ["bad.png"]
