"""What a call from Python costs beside the member's own work, in microseconds: best of several rounds.

    PYTHONPATH=build/release/python python3 tests/python/overhead.py
"""

from __future__ import annotations

import timeit
from collections.abc import Callable
from typing import Any

import tqx

P = tqx.PictureTQX


def best(call: Callable[[], Any], count: int = 20000) -> float:
    """Microseconds of one call."""
    return min(timeit.repeat(call, number=count, repeat=7)) / count * 1e6


def main() -> None:
    small, dest = P(1, 1, P.ImageFormatG), P(1, 1, P.ImageFormatG)
    calls: dict[str, Callable[[], Any]] = {
        "an empty function": lambda: None,
        "p.Width": lambda: small.Width,
        "p.Invert(0, 0, 0, 0)": lambda: small.Invert(0, 0, 0, 0),
        "p.SolarizeFilter(dest)": lambda: small.SolarizeFilter(dest),
        "p.FillRectRGB(0, 0, 0, 0, 1, 2, 3)": lambda: small.FillRectRGB(0, 0, 0, 0, 1, 2, 3),
        "p.Row(0)": lambda: small.Row(0),
        "p.ClipImage(0, 0, 1, 1)": lambda: small.ClipImage(0, 0, 1, 1),
        "p.GrayChannel()": lambda: small.GrayChannel(),
        "p.RedChannel(), a refusal": lambda: small.RedChannel(),
    }
    for name, call in calls.items():
        print(f"{best(call):6.2f}  {name}")


if __name__ == "__main__":
    main()
