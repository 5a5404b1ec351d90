"""The host's exceptions as Python's."""

from __future__ import annotations

from typing import Any

from . import _native

# What each of the host's own exceptions is in Python besides.
KIN: dict[str, type[Exception]] = {
    "OutOfBoundsException": IndexError,
    "NilObjectException": ValueError,
    "TypeMismatchException": TypeError,
    "IllegalCastException": TypeError,
    "IOException": OSError,
    "UnsupportedFormatException": ValueError,
    "KeyNotFoundException": KeyError,
    "StackOverflowException": RecursionError,
    "OutOfMemoryException": MemoryError,
}


class RuntimeException(Exception):
    """An exception that the host or a plug-in raised."""

    ErrorNumber: int = 0

    @property
    def Message(self) -> str:
        """The exception's text."""
        return str(self.args[0]) if self.args else ""

    def __str__(self) -> str:
        return self.Message


def make_exceptions(records: dict[str, dict[str, Any]]) -> dict[str, type[Exception]]:
    """A Python class for each exception class of the host, by name; and registers them."""
    made: dict[str, type[Exception]] = {"RuntimeException": RuntimeException}
    for name, record in records.items():
        base = made.get(record["superclass"] or "")
        if base:
            kin = (KIN[name],) if name in KIN else ()
            made[name] = type(name, (base, *kin), {"__module__": "tqx", "__doc__": f"The host's {name}."})
    for name, exception in made.items():
        _native.register_exception(name, exception)
    return made
