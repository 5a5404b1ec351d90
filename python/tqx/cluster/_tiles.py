"""Pieces of pictures, and calls on them in a worker."""

from __future__ import annotations

import dataclasses
import functools
from typing import Any

import numpy as np
from numpy.typing import NDArray

import tqx
from tqx import _native

Pixels = NDArray[np.uint8]
P: Any = getattr(tqx, "PictureTQX")


@dataclasses.dataclass(frozen=True)
class Box:
    """Rows top to bottom - 1 and columns left to right - 1."""

    top: int
    bottom: int
    left: int
    right: int

    @property
    def height(self) -> int:
        """Rows."""
        return self.bottom - self.top

    @property
    def width(self) -> int:
        """Columns."""
        return self.right - self.left

    def of(self, array: Any) -> Any:
        """The part of an array that the box holds."""
        return array[self.top : self.bottom, self.left : self.right]

    def within(self, outer: Box) -> Box:
        """The same box counted from the corner of another."""
        return Box(self.top - outer.top, self.bottom - outer.top, self.left - outer.left, self.right - outer.left)


@dataclasses.dataclass(frozen=True)
class Layout:
    """What the formats of a picture look like as arrays."""

    code: int
    pixel_size: int
    channels: int  # bytes of a pixel that an array shows
    offsets: tuple[int, ...]  # red, green, blue or gray, and alpha where there is any, in the shown bytes
    is_rgb: bool
    has_alpha: bool

    @property
    def fillers(self) -> list[int]:
        """The shown bytes that are no channels."""
        return [i for i in range(self.channels) if i not in self.offsets]

    def shape(self, height: int, width: int) -> tuple[int, ...]:
        """The shape of an array of so many pixels."""
        return (height, width) if self.channels == 1 else (height, width, self.channels)


@functools.cache
def layout_of(code: int) -> Layout:
    """The layout of a format. ValueError for one that operations do not work on."""
    one = P(1, 1, code)
    if not one.Valid or not (one.IsRGB or one.IsGray):
        raise ValueError(f"pictures of format {code} are neither gray nor colour")
    shape = _native.shape_of(one)[0]
    channels = shape[2] if len(shape) == 3 else 1
    if one.IsRGB:
        offsets: tuple[int, ...] = (one.RedOffset, one.GreenOffset, one.BlueOffset)
    else:
        offsets = (one.GrayOffset if channels > 1 else 0,)
    offsets += (one.AlphaOffset,) if one.HasAlpha else ()
    return Layout(code, one.PixelSize, channels, offsets, one.IsRGB, one.HasAlpha)


def picture_of(pixels: Pixels, code: int) -> Any:
    """A new picture of a piece's pixels."""
    picture = P(pixels.shape[1], pixels.shape[0], code)
    if not picture.Valid:
        raise MemoryError(f"no picture of {pixels.shape[1]} x {pixels.shape[0]} pixels can be made: {tqx.explain()}")
    _native.write_rows(picture, 0, np.ascontiguousarray(pixels))
    return picture


def new_picture(height: int, width: int, code: int) -> Any:
    """An empty picture."""
    return P(width, height, code)


def pixels_of(picture: Any, box: Box | None = None) -> Pixels:
    """A copy of a picture's pixels, or of a part."""
    view = np.asarray(picture)
    return np.array(view if box is None else box.of(view), order="C")


def refused(name: str) -> ValueError:
    """What is raised where a member gave nothing."""
    return ValueError(f"{name} refused: {tqx.explain()}")
