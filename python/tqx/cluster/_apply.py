"""One member on an array that may be larger than a machine."""

from __future__ import annotations

import itertools
from typing import Any

import numpy as np

from . import _tiles
from ._operations import OPERATIONS, WHOLE_ONLY, AutoLevel, CannotBeCut, Operation
from ._tiles import Box

_FORMATS = {1: "ImageFormatG", 2: "ImageFormatGA", 3: "ImageFormatRGB", 4: "ImageFormatRGBA"}


def apply(array: Any, member: str, *arguments: Any, image_format: int | None = None) -> Any:
    """A member of the plug-in on a ``dask.array`` of uint8, piece by piece: the bytes of one call on the whole.

    ``array`` is (height, width) or (height, width, channels); its chunks are the pieces. ``arguments`` are the
    member's without its destination: ``apply(array, "BoxBlurFilter", 5)``. UnsharpFilter takes a second array
    first, Scale a mode, a width and a height, ScaleFast a width and a height, DataStringInFormat a format.
    ``image_format`` says what the channels are; else they are gray, gray and alpha, RGB, or RGBA.

    Gives a ``dask.array``; nothing is computed yet. ApplyMatrix goes to a picture of the source's size, Rotate180 to
    a new one. CannotBeCut is raised for a member whose result would depend on the cuts, ValueError for what the
    member refuses.
    """
    source = _checked(array, image_format)
    layout = _tiles.layout_of(source.image_format)
    sources = [source.array]
    if member == "UnsharpFilter" and arguments:
        sources.append(_second(arguments[0], source.array))
        arguments = arguments[1:]
    if member in WHOLE_ONLY:
        raise CannotBeCut(f"{member} can't be cut: {WHOLE_ONLY[member]}")
    if member not in OPERATIONS:
        raise ValueError(f"{member} is none of the members that can be cut: {', '.join(sorted(OPERATIONS))}")
    height, width = source.array.shape[:2]
    operation = OPERATIONS[member](member, layout, height, width, arguments)
    return _assemble(operation, sources)


class _Source:
    """An array and the format of its pixels."""

    def __init__(self, array: Any, image_format: int) -> None:
        self.array, self.image_format = array, image_format


def _checked(array: Any, image_format: int | None) -> _Source:
    import dask.array as da

    if not isinstance(array, da.Array):
        array = da.asarray(array)
    channels = 1 if array.ndim == 2 else array.shape[2] if array.ndim == 3 else 0
    if array.dtype != np.uint8 or channels not in _FORMATS or 0 in array.shape:
        raise TypeError(f"uint8 of (height, width[, 1 to 4]) is needed, not {array.dtype} of {array.shape}")
    if array.ndim == 3:
        array = array[:, :, 0] if channels == 1 else array.rechunk({2: -1})
    code = getattr(_tiles.P, _FORMATS[channels]) if image_format is None else image_format
    if _tiles.layout_of(code).channels != channels:
        raise ValueError(f"format {code} shows {_tiles.layout_of(code).channels} channels, the array has {channels}")
    return _Source(array, code)


def _second(other: Any, array: Any) -> Any:
    import dask.array as da

    other = da.asarray(other)
    if other.shape != array.shape or other.dtype != array.dtype:
        raise ValueError(f"the second array is {other.dtype} of {other.shape}, the first {array.shape}")
    return other


def _pieces(operation: Operation, sources: list[Any], box: Box) -> list[Any]:
    boxes = operation.sources(box)
    return [part.of(sources[i] if len(sources) > 1 else sources[0]) for i, part in enumerate(boxes)]


def _run(operation: Operation, box: Box, *pieces: Any) -> Any:
    return operation.compute(box, pieces)


def _bounds(chunks: tuple[int, ...]) -> list[tuple[int, int]]:
    ends = list(itertools.accumulate(chunks))
    return list(zip([0, *ends[:-1]], ends))


def _level_table(operation: AutoLevel, array: Any) -> Any:
    """The table of all pieces' levels, still to be computed."""
    import dask

    if array.shape[0] * array.shape[1] >= 2**31:
        raise CannotBeCut("AutoLevel counts less than 2 ** 31 pixels")
    boxes = [Box(*rows, *columns) for rows in _bounds(array.chunks[0]) for columns in _bounds(array.chunks[1])]
    counts = [dask.delayed(operation.count, pure=True)(box.of(array)) for box in boxes]
    return dask.delayed(operation.table, pure=True)(counts)


def _assemble(operation: Operation, sources: list[Any]) -> Any:
    """The result as an array of its pieces."""
    import dask
    import dask.array as da

    array = sources[0]
    rows, columns = operation.result_chunks(array.chunks[0], array.chunks[1])
    extra = [_level_table(operation, array)] if isinstance(operation, AutoLevel) else []
    layout = operation.result_layout
    run = dask.delayed(_run, pure=False)
    lines = []
    for top, bottom in _bounds(rows):
        line = []
        for left, right in _bounds(columns):
            box = Box(top, bottom, left, right)
            piece = run(operation, box, *_pieces(operation, sources, box), *extra)
            shape = layout.shape(box.height, box.width)
            line.append(da.from_delayed(piece, shape, dtype=np.uint8))
        lines.append(da.concatenate(line, axis=1))
    return da.concatenate(lines, axis=0)
