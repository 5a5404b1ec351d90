"""Colours of the host."""

from __future__ import annotations

from . import _native


class Color(int):
    """A colour 0x00RRGGBB. ``Color(0xFF8000)`` and ``Color(255, 128, 0)`` are the same."""

    def __new__(cls, red: int, green: int | None = None, blue: int | None = None) -> Color:
        """From one number, or from three channels of 0 to 255."""
        if green is None or blue is None:
            return super().__new__(cls, red)
        if not all(0 <= channel <= 255 for channel in (red, green, blue)):
            raise ValueError("a colour's channels are 0 to 255")
        return super().__new__(cls, red << 16 | green << 8 | blue)

    @property
    def Red(self) -> int:
        """The red channel."""
        return self >> 16 & 255

    @property
    def Green(self) -> int:
        """The green channel."""
        return self >> 8 & 255

    @property
    def Blue(self) -> int:
        """The blue channel."""
        return self & 255

    def __repr__(self) -> str:
        return f"Color(0x{int(self):06X})"


_native.set_color_type(Color)
