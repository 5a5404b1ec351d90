"""Why members refused."""

from __future__ import annotations

import contextlib
from collections.abc import Iterator

from . import _native


def explain() -> str:
    """Why the last call of this thread that gave None or False, or made a picture that is not valid, did so.

    Empty when none did.
    """
    return _native.last_explanation()


@contextlib.contextmanager
def explaining() -> Iterator[list[str]]:
    """Collects a sentence for each call within that refused, did nothing, or left pixels out.

    Unlike explain() it tells of members that give nothing, too. Calls take longer meanwhile.
    """
    sentences: list[str] = []
    before = _native.listen(sentences.append)
    try:
        yield sentences
    finally:
        _native.listen(before)
