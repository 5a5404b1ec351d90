"""Image files as arrays, through the host's readers and writers."""

from __future__ import annotations

import os
from typing import Any, Union

import numpy as np
from numpy.typing import NDArray

from . import _native

Path = Union[str, "os.PathLike[str]"]


def imread(path: Path, *, max_pixels: int | None = None, upright: bool = True) -> NDArray[Any]:
    """Reads PNG, JPEG, TIFF, WebP, GIF, BMP and PNM files.

    Gives uint8 of (height, width) for gray, else (height, width, channels): gray and alpha, RGB, RGBA.
    Orientation is applied unless ``upright`` is false. ``max_pixels`` bounds width x height (0: nothing does);
    without it the bound grows with the file's size.
    """
    if not os.path.exists(path):
        raise FileNotFoundError(f"{os.fspath(path)}: there is no such file")
    reader = _native.ImageReader(os.fspath(path), max_pixels, upright)
    pixels = np.empty(reader.shape, dtype=np.uint8)
    reader.read_into(pixels)
    return pixels


def imwrite(path: Path, image: Any, *, quality: int | None = None) -> None:
    """Writes an array or a picture of gray, gray and alpha, RGB or RGBA to a file, whole or not at all.

    The format is that of the name's extension. ``quality``: 0 to 100 for JPEG, and for WebP, which is lossless
    without.
    """
    pixels = np.ascontiguousarray(_in_file_order(image))
    if pixels.dtype != np.uint8 or pixels.ndim not in (2, 3):
        raise TypeError(f"uint8 of (h, w) or (h, w, channels) is written, not {pixels.dtype} of {pixels.shape}")
    channels = 1 if pixels.ndim == 2 else pixels.shape[2]
    writer = _native.ImageWriter(os.fspath(path), pixels.shape[1], pixels.shape[0], channels, quality)
    writer.write_from(pixels)
    writer.finish()


def _in_file_order(image: Any) -> NDArray[Any]:
    """The channels of a picture in the order of files, whatever its format; an array as it is."""
    if not hasattr(image, "DataStringInFormat"):
        return np.asarray(image)
    gray, alpha = image.IsGray, image.HasAlpha
    name = "ImageFormat" + ("G" if gray else "RGB") + ("A" if alpha else "")
    data = image.DataStringInFormat(getattr(type(image), name))
    if data is None:
        raise ValueError("the picture has no pixels to write")
    channels = (1 if gray else 3) + int(alpha)
    shape = (image.Height, image.Width) + ((channels,) if channels > 1 else ())
    return np.frombuffer(data, dtype=np.uint8).reshape(shape)
