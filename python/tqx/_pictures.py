"""What pictures can do besides the members of their records: arrays in and out."""

from __future__ import annotations

from collections.abc import Iterator
from typing import Any

import numpy as np
from numpy.typing import NDArray

from . import _native

# What a class must have for its objects to be looked at as arrays.
_NEEDED = {"ImageFormat", "PixelSize", "Width", "Height", "Valid", "IsMapping"}
# By the channels of an array: the constant of the format that it is wrapped in.
_FORMATS = {1: "ImageFormatG", 2: "ImageFormatGA", 3: "ImageFormatRGB", 4: "ImageFormatRGBA"}


def is_picture(record: dict[str, Any]) -> bool:
    """Whether a class's objects are pictures that arrays can show."""
    methods = {method["name"] for method in record["methods"]}
    return _NEEDED <= {prop["name"] for prop in record["properties"]} and "RawRow" in methods


def _array(self: Any, dtype: Any = None, copy: bool | None = None) -> NDArray[Any]:
    """The picture as an array, for NumPy: its pixels in place."""
    if copy is False and dtype is not None and np.dtype(dtype) != np.asarray(memoryview(self)).dtype:
        raise ValueError("another type of numbers needs a copy")
    view = np.asarray(memoryview(self))
    return view if dtype is None else view.astype(dtype, copy=bool(copy))


def _array_interface(self: Any) -> dict[str, Any]:
    """A copy of the pixels, for libraries that look for this; NumPy itself looks at them in place."""
    try:
        packed = np.ascontiguousarray(np.asarray(memoryview(self)))
    except BufferError as error:
        raise AttributeError(str(error)) from None
    return {
        "shape": packed.shape,
        "typestr": packed.dtype.str,
        "version": 3,
        "data": packed.tobytes(),
        "strides": packed.strides,
    }


def _tobytes(self: Any) -> bytes:
    """A copy of the pixels, row after row without padding."""
    shape, item = _native.shape_of(self)
    rows = np.empty(shape, dtype=np.dtype(item.replace("B", "u1").replace("f", "f4")))
    _native.read_rows(self, 0, rows)
    return rows.tobytes()


def _rows(self: Any, writable: bool = False) -> Iterator[NDArray[Any]]:
    """Walks copies of the rows, of any picture, in a file too.

    With ``writable`` what was changed in a row is written back when the next one is asked for.
    """
    shape, item = _native.shape_of(self)
    row = np.empty((1, *shape[1:]), dtype=np.dtype(item.replace("B", "u1").replace("f", "f4")))
    for y in range(shape[0]):
        _native.read_rows(self, y, row)
        if not writable:
            yield row[0].copy()
            continue
        yield row[0]
        _native.write_rows(self, y, row)


def _fitting(array: NDArray[Any], channels: int) -> bool:
    """Whether a picture can be wrapped around the array's memory as it lies."""
    if not array.flags.writeable or array.size == 0:
        return False
    pixel = array.strides[1] if array.shape[1] > 1 else channels
    inner = array.strides[2] if array.ndim == 3 and channels > 1 else 1
    return pixel == channels and inner == 1 and abs(array.strides[0]) < 2**31


def _channels_of(array: NDArray[Any]) -> int:
    if array.dtype != np.uint8:
        raise TypeError(f"an array of uint8 is needed, not of {array.dtype}")
    channels = 1 if array.ndim == 2 else array.shape[2] if array.ndim == 3 else 0
    if channels not in _FORMATS:
        raise ValueError(f"an array (h, w) or (h, w, 1 to 4) is needed, not {array.shape}")
    return channels


def _from_array(cls: Any, array: Any, copy: bool = False) -> Any:
    """A picture around an array of uint8 (h, w), (h, w, 2), (h, w, 3) or (h, w, 4), in place.

    The picture keeps the array alive, and what is done to one is seen in the other. An array whose pixels do
    not lie one beside the other, or that can't be written to, needs ``copy=True``.
    """
    array = np.asarray(array)
    channels = _channels_of(array)
    height, width = array.shape[:2]
    image_format = getattr(cls, _FORMATS[channels])
    if copy:
        picture = cls(width, height, image_format)
        if not picture.Valid:
            raise ValueError(f"no picture of {width} x {height} pixels can be made")
        _native.write_rows(picture, 0, np.ascontiguousarray(array))
        return picture
    if not _fitting(array, channels):
        raise ValueError("the array's memory can't be used in place; copy=True copies it")
    upside_down = array.strides[0] < 0
    lying = array[::-1] if upside_down else array
    stride = lying.strides[0] if height > 1 else width * channels
    picture = cls(_native.lend(lying), width, height, image_format, stride)
    if not picture.Valid:
        raise ValueError(f"no picture can be made around {width} x {height} pixels of a row size of {stride}")
    return picture.MirroredView() if upside_down else picture


def members() -> dict[str, Any]:
    """The additional members of a picture's class."""
    return {
        "__array__": _array,
        "__array_interface__": property(_array_interface),
        "tobytes": _tobytes,
        "rows": _rows,
        "from_array": classmethod(_from_array),
    }
