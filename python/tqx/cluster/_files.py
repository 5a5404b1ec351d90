"""Large pictures in files as arrays."""

from __future__ import annotations

import os
import pathlib
from typing import Any, Union

import numpy as np

from tqx import _native

Path = Union[str, "os.PathLike[str]"]


# Rows that are mapped at a time: what is mapped around a piece counts as memory of the worker, all of its rows' bytes.
_BAND = 64


class _RawPixels:
    """Raw pixels of a file, of which each piece reads its part: a map of the file would go to workers whole."""

    dtype = np.dtype(np.uint8)

    def __init__(self, path: str, shape: tuple[int, ...]) -> None:
        if os.path.getsize(path) < np.prod(shape, dtype=np.int64):
            raise ValueError(f"{path}: is shorter than pixels of {shape}")
        self.path, self.shape, self.ndim = path, shape, len(shape)

    def __getitem__(self, index: Any) -> Any:
        rows, *others = index if isinstance(index, tuple) else (index,)
        if not all(isinstance(part, slice) for part in (rows, *others)):
            return self._read(index)
        chosen = np.arange(self.shape[0])[rows]
        pixels = np.empty((len(chosen), *self._read((slice(0, 1), *others)).shape[1:]), np.uint8)
        for at in range(0, len(chosen), _BAND):
            pixels[at : at + _BAND] = self._read((chosen[at : at + _BAND], *others))
        return pixels

    def _read(self, index: Any) -> Any:
        return np.array(np.memmap(self.path, dtype=np.uint8, mode="r", shape=self.shape)[index])


def open(path: Path, *, shape: tuple[int, ...] | None = None, chunk: int = 2048, scratch: Path | None = None) -> Any:
    """A ``dask.array`` of uint8 over a file, in pieces of ``chunk`` x ``chunk`` pixels.

    - a Zarr folder: as it is chunked;
    - raw pixels, row after row: with ``shape``, (height, width) or (height, width, channels);
    - an image file (TIFF and all others that imread reads, of any size): its rows go once, one after the other, to
      a Zarr folder ``scratch``, which is the caller's to remove.
    """
    import dask.array as da

    if shape is not None:
        pixels = _RawPixels(os.path.abspath(path), shape)
        return da.from_array(pixels, chunks=(chunk, chunk, *shape[2:]), name=False)
    if pathlib.Path(path).is_dir():
        return da.from_zarr(os.fspath(path))
    if scratch is None:
        raise ValueError("an image file needs a scratch folder for its pixels")
    return da.from_zarr(_unpacked(path, chunk, os.fspath(scratch)))


def _unpacked(path: Path, chunk: int, scratch: str) -> str:
    """Copies an image file's rows to a Zarr folder, a row of chunks at a time."""
    import zarr

    reader = _native.ImageReader(os.fspath(path), 0, True)
    shape = reader.shape
    chunks = (chunk, chunk, *shape[2:])
    pixels = zarr.open(scratch, mode="w", shape=shape, chunks=chunks, dtype="u1")
    for top in range(0, shape[0], chunk):
        rows = np.empty((min(chunk, shape[0] - top), *shape[1:]), np.uint8)
        reader.read_into(rows)
        pixels[top : top + len(rows)] = rows
    return scratch
