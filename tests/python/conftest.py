"""What the tests of the Python package share."""

from __future__ import annotations

import gc
from collections.abc import Iterator
from typing import Any

import numpy as np
import pytest

import tqx
from tqx import _native


@pytest.fixture(autouse=True)
def nothing_is_left_alive(request: pytest.FixtureRequest) -> Iterator[None]:
    """Fails a test that leaves an object of the host alive."""
    gc.collect()
    before = _native.live_counts()["objects"]
    yield
    request.node.funcargs.clear()
    gc.collect()
    assert _native.live_counts()["objects"] == before, "objects of the host are left alive"


def numbered(picture: Any) -> Any:
    """Fills a picture with bytes that all differ from their neighbours."""
    pixels = np.asarray(picture)
    pixels[...] = (np.arange(pixels.size) * 37 % 251).reshape(pixels.shape)
    return picture


@pytest.fixture
def photo() -> Any:
    """A small picture of colours."""
    return numbered(tqx.PictureTQX(7, 5, tqx.PictureTQX.ImageFormatRGB))
