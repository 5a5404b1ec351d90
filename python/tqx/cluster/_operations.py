"""How each member is cut: which part of the source a part of the result needs, and the call that makes it.

An :class:`Operation` is made for one call on one array. Where a member looks at neighbours, its pieces have them as
a border that is cut off afterwards; the picture's own edges are edges of pieces too, so what a member does there
it does in pieces as in the whole.
"""

from __future__ import annotations

import math
from collections.abc import Callable, Sequence
from typing import Any

import numpy as np

from tqx import _native

from . import _tiles
from ._tiles import Box, Layout, Pixels

Arguments = tuple[Any, ...]
_FULL = 2**31 - 1


class CannotBeCut(ValueError):
    """A member whose result in pieces would not be that of one call."""


class Operation:
    """A member for one call: by default one that works on each pixel and gives a picture of the same size."""

    def __init__(self, name: str, layout: Layout, height: int, width: int, arguments: Arguments) -> None:
        self.name, self.layout, self.arguments = name, layout, arguments
        self.height, self.width = height, width
        self.check()

    def check(self) -> None:
        """Raises what the call would, before anything is computed: tried on a picture of one pixel."""
        one = np.zeros(self.layout.shape(1, 1), np.uint8)
        self.call(_tiles.picture_of(one, self.layout.code))

    @property
    def result_layout(self) -> Layout:
        """What the result's pixels are."""
        return self.layout

    def result_chunks(self, rows: tuple[int, ...], columns: tuple[int, ...]) -> tuple[tuple[int, ...], tuple[int, ...]]:
        """The pieces of the result, from those of the source."""
        return rows, columns

    def border(self) -> tuple[int, int, int, int]:
        """How far it looks: up, down, left, right."""
        return (0, 0, 0, 0)

    def sources(self, box: Box) -> list[Box]:
        """The parts of the source that a part of the result needs."""
        up, down, left, right = self.border()
        return [
            Box(
                max(box.top - up, 0),
                min(box.bottom + down, self.height),
                max(box.left - left, 0),
                min(box.right + right, self.width),
            )
        ]

    def call(self, picture: Any) -> Any:
        """The member on a piece; gives the result's picture."""
        result = getattr(picture, self.name)(None, *self.arguments)
        if result is None:
            raise _tiles.refused(self.name)
        return result

    def compute(self, box: Box, pieces: Sequence[Pixels]) -> Pixels:
        """A part of the result."""
        result = self.call(_tiles.picture_of(pieces[0], self.layout.code))
        return _tiles.pixels_of(result, box.within(self.sources(box)[0]))


# --- Neighbourhoods -----------------------------------------------------------------------------


class Convolution(Operation):
    """ApplyMatrix, into a picture of the source's size."""

    def border(self) -> tuple[int, int, int, int]:
        return (2, 2, 2, 2)

    def call(self, picture: Any) -> Any:
        dest = _tiles.new_picture(picture.Height, picture.Width, self.layout.code)
        result = picture.ApplyMatrix(dest, *self.arguments)
        if result is None:
            raise _tiles.refused(self.name)
        return result


def _radius(radius: float) -> int:
    """How far a box blur of one round looks; nowhere for one that is too large to be made."""
    if math.isnan(radius) or radius < 0:
        return 0
    whole = _FULL if math.isinf(radius) else min(int(radius), _FULL)
    return 0 if (2 * whole + 1) * 255 > _FULL else whole


class BoxBlur(Operation):
    """BoxBlurFilter: as far as its radius, once for each round."""

    def border(self) -> tuple[int, int, int, int]:
        rounds = int(self.arguments[1]) if len(self.arguments) > 1 else 1
        reach = _radius(float(self.arguments[0])) * max(rounds, 0)
        return (reach,) * 4


class Stamp(Operation):
    """StampFilter: three blurs by a third of its radius."""

    def border(self) -> tuple[int, int, int, int]:
        return (3 * _radius(float(self.arguments[0]) / 3.0),) * 4


class FractionalBlur(Operation):
    """BoxBlurFractionalFilter: the next pixel on each side."""

    def border(self) -> tuple[int, int, int, int]:
        return (1, 1, 1, 1)


class Engrave(Operation):
    """EngraveFilter: a pixel below and to the right, or above and to the left."""

    def border(self) -> tuple[int, int, int, int]:
        level = int(self.arguments[0])
        return (max(-level, 0), max(level, 0)) * 2


class Neon(Operation):
    """NeonFilter: the pixels below and to the right."""

    def border(self) -> tuple[int, int, int, int]:
        return (0, 1, 0, 1)


class Oil(Operation):
    """OilFilter, where it keeps no state from pixel to pixel."""

    def check(self) -> None:
        if self.layout.has_alpha:
            raise CannotBeCut("OilFilter counts alpha over all pixels before: the result depends on their order")
        super().check()

    def border(self) -> tuple[int, int, int, int]:
        return (max(int(self.arguments[1]), 0),) * 4


class Dither(Operation):
    """DitherFilter: pieces begin where the matrix does."""

    _SIZES = {1: 2, 2: 4, 3: 4, 4: 4, 5: 6, 6: 6, 7: 8, 8: 6, 9: 8, 10: 16}

    def sources(self, box: Box) -> list[Box]:
        size = self._SIZES.get(int(self.arguments[0]), 1)
        return [Box(box.top - box.top % size, box.bottom, box.left - box.left % size, box.right)]


# --- In place -----------------------------------------------------------------------------------


class InPlace(Operation):
    """A member that changes each pixel of its picture by itself."""

    def call(self, picture: Any) -> Any:
        getattr(picture, self.name)(*self.arguments)
        return picture


class Unsharp(Operation):
    """UnsharpFilter, with a second array of the same shape."""

    def check(self) -> None:
        one = _tiles.new_picture(1, 1, self.layout.code)
        one.UnsharpFilter(one, *self.arguments)

    def sources(self, box: Box) -> list[Box]:
        return [box, box]

    def compute(self, box: Box, pieces: Sequence[Pixels]) -> Pixels:
        picture, blurred = (_tiles.picture_of(piece, self.layout.code) for piece in pieces)
        if not picture.UnsharpFilter(blurred, *self.arguments):
            raise _tiles.refused(self.name)
        return _tiles.pixels_of(picture)


class Mirror(InPlace):
    """HMirror and VMirror: the opposite piece, mirrored. Filler bytes keep their place."""

    def result_chunks(self, rows: tuple[int, ...], columns: tuple[int, ...]) -> tuple[tuple[int, ...], tuple[int, ...]]:
        return (rows, columns[::-1]) if self.name == "HMirror" else (rows[::-1], columns)

    def sources(self, box: Box) -> list[Box]:
        if self.name == "HMirror":
            opposite = Box(box.top, box.bottom, self.width - box.right, self.width - box.left)
        else:
            opposite = Box(self.height - box.bottom, self.height - box.top, box.left, box.right)
        return [opposite, box] if self.layout.fillers else [opposite]

    def compute(self, box: Box, pieces: Sequence[Pixels]) -> Pixels:
        pixels = _tiles.pixels_of(self.call(_tiles.picture_of(pieces[0], self.layout.code)))
        for filler in self.layout.fillers:
            pixels[..., filler] = pieces[1][..., filler]
        return pixels


# --- Turns --------------------------------------------------------------------------------------


class Turn(Operation):
    """Right-angle turns into a new picture."""

    def call(self, picture: Any) -> Any:
        return getattr(picture, self.name)(None)

    def result_chunks(self, rows: tuple[int, ...], columns: tuple[int, ...]) -> tuple[tuple[int, ...], tuple[int, ...]]:
        if self.name.startswith("Rotate90"):
            return columns[::-1], rows
        return (columns, rows[::-1]) if self.name.startswith("Rotate270") else (rows[::-1], columns[::-1])

    def sources(self, box: Box) -> list[Box]:
        height, width = self.height, self.width
        if self.name.startswith("Rotate90"):
            return [Box(box.left, box.right, width - box.bottom, width - box.top)]
        if self.name.startswith("Rotate270"):
            return [Box(height - box.right, height - box.left, box.top, box.bottom)]
        return [Box(height - box.bottom, height - box.top, width - box.right, width - box.left)]

    def compute(self, box: Box, pieces: Sequence[Pixels]) -> Pixels:
        return _tiles.pixels_of(self.call(_tiles.picture_of(pieces[0], self.layout.code)))


# --- Conversions --------------------------------------------------------------------------------


class Conversion(Operation):
    """DataStringInFormat: the pixels in another format, all of its bytes."""

    def check(self) -> None:
        if len(self.arguments) != 1:
            raise TypeError("DataStringInFormat takes a format")
        self.target = _tiles.layout_of(self.arguments[0])
        # Colour with alpha gets the alpha of the row's first pixel.
        self.needs_first = self.target.is_rgb and self.target.has_alpha and not self.layout.is_rgb
        self.needs_first = self.needs_first and self.layout.has_alpha

    @property
    def result_layout(self) -> Layout:
        size = self.target.pixel_size
        return Layout(self.target.code, size, size, tuple(range(size)), self.target.is_rgb, self.target.has_alpha)

    def sources(self, box: Box) -> list[Box]:
        return [box, Box(box.top, box.bottom, 0, 1)] if self.needs_first else [box]

    def compute(self, box: Box, pieces: Sequence[Pixels]) -> Pixels:
        piece = np.concatenate([pieces[1], pieces[0]], axis=1) if self.needs_first else pieces[0]
        data = _tiles.picture_of(piece, self.layout.code).DataStringInFormat(self.target.code)
        if data is None:
            raise _tiles.refused(self.name)
        pixels = np.frombuffer(data, np.uint8).reshape(self.result_layout.shape(*piece.shape[:2]))
        return pixels[:, 1:] if self.needs_first else pixels


# --- Scaling ------------------------------------------------------------------------------------


class Scaling(Operation):
    """What both scalings share: another size, in pieces as large as the source's."""

    size_at = 0  # where width and height stand among the arguments

    def check(self) -> None:
        if len(self.arguments) != self.size_at + 2:
            raise TypeError(f"{self.name} takes {'a mode, ' * self.size_at}a width and a height")
        self.to_width, self.to_height = (int(size) for size in self.arguments[self.size_at :])
        if self.to_width < 1 or self.to_height < 1:
            raise ValueError(f"{self.name}: a size of {self.to_width} x {self.to_height} is none")

    def result_chunks(self, rows: tuple[int, ...], columns: tuple[int, ...]) -> tuple[tuple[int, ...], tuple[int, ...]]:
        return _pieces(self.to_height, max(rows)), _pieces(self.to_width, max(columns))


def _pieces(total: int, most: int) -> tuple[int, ...]:
    return tuple(min(most, total - start) for start in range(0, total, most))


class NearestScaling(Scaling):
    """ScaleFast: the nearest pixels by their places in the whole, then the call without a change of size."""

    def _taken(self, count: int, result: int, begin: int, end: int) -> np.ndarray[Any, Any]:
        step = count / result
        return (step * np.arange(begin, end)).astype(np.int64)

    def _indices(self, box: Box) -> tuple[Any, Any]:
        rows = self._taken(self.height, self.to_height, box.top, box.bottom)
        return rows, self._taken(self.width, self.to_width, box.left, box.right)

    def sources(self, box: Box) -> list[Box]:
        rows, columns = self._indices(box)
        return [Box(int(rows[0]), int(rows[-1]) + 1, int(columns[0]), int(columns[-1]) + 1)]

    def compute(self, box: Box, pieces: Sequence[Pixels]) -> Pixels:
        rows, columns = self._indices(box)
        picked = pieces[0][np.ix_(rows - rows[0], columns - columns[0])]
        dest = _tiles.new_picture(box.height, box.width, self.layout.code)
        if not dest.ScaleFast(_tiles.picture_of(picked, self.layout.code), box.width, box.height):
            raise _tiles.refused(self.name)
        return _tiles.pixels_of(dest)


class FilteredScaling(Scaling):
    """Scale: the plug-in's lists of weights by places in the whole, summed here in the stated order."""

    size_at = 1

    def check(self) -> None:
        super().check()
        self.mode = int(self.arguments[0])
        _native.contributions(self.mode, True, 1, 1, 0, 1)  # a ValueError for an unknown mode

    def _lists(self, box: Box) -> tuple[Any, Any]:
        across = _native.contributions(self.mode, True, self.width, self.to_width, box.left, box.right)
        return across, _native.contributions(self.mode, False, self.height, self.to_height, box.top, box.bottom)

    def sources(self, box: Box) -> list[Box]:
        across, down = self._lists(box)
        left, right = _reach(across, self.width)
        top, bottom = _reach(down, self.height)
        return [Box(top, bottom, left, right)]

    def compute(self, box: Box, pieces: Sequence[Pixels]) -> Pixels:
        source = self.sources(box)[0]
        across, down = self._lists(box)
        samples = pieces[0].reshape(source.height, source.width, self.layout.channels)
        channels = samples[:, :, list(self.layout.offsets)]
        between = _summed(channels, across, source.left, 1).astype(np.float32)
        result = np.zeros((box.height, box.width, self.layout.channels), np.uint8)
        result[:, :, list(self.layout.offsets)] = _summed(between, down, source.top, 0).astype(np.uint8)
        return result.reshape(self.layout.shape(box.height, box.width))


def _reach(lists: tuple[Any, Any, Any], count: int) -> tuple[int, int]:
    """The samples that lists use."""
    first, weights, _ = lists
    return int(first.min()), min(int(first.max()) + weights.shape[1], count)


def _summed(samples: Any, lists: tuple[Any, Any, Any], begin: int, axis: int) -> Any:
    """Weighted sums along an axis, each in the order of its list, divided by the weights' total and cut to
    0 ... 255. Weights of 0 at a list's end add nothing."""
    first, weights, totals = lists
    shape = [1, 1, 1]
    shape[axis] = len(first)
    total: Any = 0.0
    for k in range(weights.shape[1]):
        index = np.minimum(first - begin + k, samples.shape[axis] - 1)
        total = total + weights[:, k].reshape(shape) * np.take(samples, index, axis=axis).astype(np.float64)
    with np.errstate(invalid="ignore", divide="ignore"):
        mean = total / totals.reshape(shape)
    return np.clip(np.nan_to_num(mean, nan=0.0, posinf=255.0, neginf=0.0), 0.0, 255.0)


# --- Levels -------------------------------------------------------------------------------------


class AutoLevel(InPlace):
    """AutoLevel: the histograms of all pieces first; then their sum makes one table for all."""

    def check(self) -> None:
        if self.arguments:
            raise CannotBeCut("AutoLevel is cut for whole pictures only")
        if not self.layout.is_rgb:
            raise ValueError("AutoLevel refused: gray pictures have no levels")

    def count(self, piece: Pixels) -> Any:
        """A piece's pixels by luminance."""
        return _native.count_luminance(np.ascontiguousarray(piece), *self.layout.offsets[:3])

    @staticmethod
    def table(counts: Sequence[Any]) -> list[int]:
        """What each channel value becomes."""
        running = np.cumsum(np.sum(counts, axis=0))
        total = np.float32(running[-1])
        low, high = (_last_not_above(running, int(total * np.float32(part))) for part in (0.005, 0.995))
        scale = 255.0 / (high - low) if high != low else math.inf
        middle = {v: 0 if v == low and high == low else int(scale * (v - low)) for v in range(low, high + 1)}
        return [0 if v < low else middle.get(v, 255) for v in range(256)]

    def compute(self, box: Box, pieces: Sequence[Any]) -> Pixels:
        picture = _tiles.picture_of(pieces[0], self.layout.code)
        picture.TransferFilter(picture, pieces[1])
        return _tiles.pixels_of(picture)


def _last_not_above(running: Any, limit: int) -> int:
    """The last index of a running sum that is not above a limit; 0 if there is none."""
    return max(int(np.searchsorted(running, limit, side="right")) - 1, 0)


# --- The table ----------------------------------------------------------------------------------

OPERATIONS: dict[str, Callable[[str, Layout, int, int, Arguments], Operation]] = {
    **dict.fromkeys(("GammaFilter", "GainFilter", "TransferFilter", "SolarizeFilter"), Operation),
    "Invert": InPlace,
    "ApplyMatrix": Convolution,
    "BoxBlurFilter": BoxBlur,
    "BoxBlurFractionalFilter": FractionalBlur,
    "StampFilter": Stamp,
    "UnsharpFilter": Unsharp,
    "DitherFilter": Dither,
    "OilFilter": Oil,
    "EngraveFilter": Engrave,
    "NeonFilter": Neon,
    **dict.fromkeys(("HMirror", "VMirror"), Mirror),
    **dict.fromkeys(("Rotate180", "Rotate90", "Rotate90slow", "Rotate270", "Rotate270slow"), Turn),
    "DataStringInFormat": Conversion,
    "AutoLevel": AutoLevel,
    "ScaleFast": NearestScaling,
    "Scale": FilteredScaling,
}
WHOLE_ONLY = {
    "DiffuseFilter": "it draws random numbers in the order of the pixels",
    "Rotate": "its shears shift rows by amounts that add up over the whole picture",
    "CopyPixels": "within one picture it reads what it has written; DataStringInFormat converts",
    "Row": "rows are read from the array itself",
}
