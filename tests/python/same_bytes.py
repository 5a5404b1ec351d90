"""Cases for test_same_bytes: every member of the plug-in's picture class, as a script and as calls from Python.

Run as a program it makes the calls from Python, in a process of its own as the script has, and prints a line a case.
"""

from __future__ import annotations

import dataclasses
import hashlib
import json
from typing import Any

import tqx
from tqx import _native

P = tqx.PictureTQX
FORMATS = (P.ImageFormatRGBA, P.ImageFormatRGB, P.ImageFormatG, P.ImageFormatGA, P.ImageFormatXBGR)
WIDTH, HEIGHT = 9, 7

# What stands for a parameter of this name, else of this type: the script's words.
_BY_NAME = {
    **dict.fromkeys(("temp", "filepath"), "Nil"),
    **dict.fromkeys(("width", "w", "destwidth"), "5"),
    **dict.fromkeys(("height", "h", "destheight"), "4"),
    **dict.fromkeys(("imageformat", "theimageformat"), "2"),
    **{"index": "3", "x": "2", "y": "1", "destx": "1", "desty": "2", "mode": "5", "levels": "4", "level": "0"},
    **{"rowsize": "64", "gain": "0.4", "bias": "0.6", "angle": "33.0", "range": "2", "blocksize": "65536"},
}
_BY_TYPE = {
    "Integer": "3",
    "Double": "1.75",
    "Boolean": "True",
    "Color": "&cFF8040",
    "Integer()": "Table(numbers)",
    "PictureTQX": "other",
    "Picture": "hostPicture",
    "MemoryBlock": "block",
    "FolderItem": "Nil",
    "PictureFactoryTQX": "Nil",
    "String": "text",
}


@dataclasses.dataclass(frozen=True)
class Case:
    """One overload, its getter or its setter, or one property."""

    kind: str  # method, shared, constructor, setter, property
    name: str
    arguments: tuple[str, ...]
    result: str | None


def _argument(owner: str, parameter: dict[str, Any]) -> str:
    name, kind = parameter["name"].lower(), parameter["type"]
    if owner == "ApplyMatrix" and kind == "Integer()":
        return "Table(25)"
    if owner == "DitherFilter" and name == "matrix":
        return "7"
    return _BY_NAME.get(name) if name in _BY_NAME and kind in ("Integer", "Double") else _BY_TYPE[kind]


def cases() -> list[Case]:
    """A case for all that the records state."""
    record = next(c for c in json.loads(_native.records())["classes"] if c["name"] == "PictureTQX")
    found = []
    for kind, methods in (("method", record["methods"]), ("shared", record["sharedMethods"])):
        for method in methods:
            arguments = tuple(_argument(method["name"], p) for p in method["parameters"])
            this = "constructor" if method["name"] == "Constructor" else kind
            found.append(Case(this, method["name"], arguments, method["result"]))
            if method["assignable"]:
                found.append(Case("setter", method["name"], arguments, method["result"]))
    found += [Case("property", prop["name"], (), prop["type"]) for prop in record["properties"]]
    return found


# --- As a script --------------------------------------------------------------------------------

_PRELUDE = """
Function Bytes(count As Integer, first As Integer) As MemoryBlock
  Dim block As New MemoryBlock(count)
  For i As Integer = 0 To count - 1
    block.UInt8Value(i) = (first + i * 37) Mod 251
  Next
  Return block
End Function

Function Filled(imageFormat As Integer, first As Integer) As PictureTQX
  Dim p As New PictureTQX(9, 7, imageFormat)
  For y As Integer = 0 To p.Height - 1
    p.Row(y) = Bytes(p.RowSize, first + y * 11)
  Next
  Return p
End Function

Function Table(count As Integer) As Integer()
  Dim numbers() As Integer
  For i As Integer = 0 To count - 1
    numbers.Append((i * 7) Mod 256)
  Next
  If count = 25 Then
    For i As Integer = 0 To 24
      numbers(i) = i Mod 5 - 2
    Next
  End If
  Return numbers
End Function

Function Digest(text As String) As String
  Return EncodeHex(MD5(text))
End Function

Function ShowPicture(p As PictureTQX) As String
  If p Is Nil Then Return "Nil"
  Dim all As String
  If p.Memory <> Nil Then
    For y As Integer = 0 To p.Height - 1
      all = all + p.Row(y).StringValue(0, p.RowSize)
    Next
  End If
  Return Str(p.Width) + "x" + Str(p.Height) + " " + Str(p.ImageFormat) + " " + Digest(all)
End Function

Function ShowHost(p As Picture) As String
  If p Is Nil Then Return "Nil"
  Return ShowPicture(New PictureTQX(p))
End Function
"""

_SHOWN = {
    "PictureTQX": "ShowPicture(result)",
    "Picture": "ShowHost(result)",
    "Boolean": "Str(result)",
    "String": "Digest(result)",
}
_NUMBERS = ("Integer", "Int64", "Double", "Boolean")


def _shown(result: str) -> str:
    if result in _NUMBERS:
        return 'If(result, "True", "False")' if result == "Boolean" else "Str(result)"
    if result == "MemoryBlock":
        return "ShowBlock(result)"
    return _SHOWN.get(result, "ShowNil(result)")


_HELPERS = """
Function ShowBlock(block As MemoryBlock) As String
  If block Is Nil Then Return "Nil"
  If block.Size < 0 Then Return "foreign"
  Return Digest(block.StringValue(0, block.Size))
End Function

Function ShowBoolean(value As Boolean) As String
  If value Then Return "True"
  Return "False"
End Function
"""


def _call(case: Case) -> list[str]:
    """The lines of a script that make the call and leave what it gave in ``told``."""
    arguments = ", ".join(case.arguments)
    if case.kind == "constructor":
        return [f"p.Constructor({arguments})"]
    if case.kind == "setter":
        value = "block" if case.result == "MemoryBlock" else "text"
        return [f"p.{case.name}({arguments}) = {value}"]
    subject = "PictureTQX" if case.kind == "shared" else "p"
    words = f"{subject}.{case.name}" + (f"({arguments})" if case.kind != "property" else "")
    if not case.result:
        return [words]
    shown = _shown(case.result).replace('If(result, "True", "False")', "ShowBoolean(result)")
    if "ShowNil" in shown:
        return [f"Dim result As {case.result} = {words}", 'told = "object"', 'If result Is Nil Then told = "Nil"']
    return [f"Dim result As {case.result} = {words}", f"told = {shown}"]


def script() -> str:
    """A script that prints a line for each case and format."""
    text = _PRELUDE + _HELPERS
    for number, case in enumerate(cases()):
        lines = [
            f"Sub Case{number}(imageFormat As Integer)",
            "Dim p As PictureTQX = Filled(imageFormat, 5)",
            "Dim other As PictureTQX = Filled(imageFormat, 90)",
            "Dim hostPicture As Picture = Filled(2, 30).CopyPictureWithMask",
            "Dim block As MemoryBlock = Bytes(640, 3)",
            "Dim text As String = block.StringValue(0, 640)",
            "Dim numbers As Integer = 256",
            'Dim told As String = "nothing"',
            "Try",
            *_call(case),
            "Catch e As RuntimeException",
            "told = e.Message",
            "End Try",
            f'Print "{number} {case.kind} {case.name} " + Str(imageFormat) + " " + told + " " + ShowPicture(p) + " "'
            " + ShowPicture(other)",
            "End Sub",
        ]
        text += "\n" + "\n".join(lines) + "\n"
    for number in range(len(cases())):
        text += "".join(f"Case{number}({code})\n" for code in FORMATS)
    return text


# --- From Python --------------------------------------------------------------------------------


def _bytes(count: int, first: int) -> bytes:
    return bytes((first + i * 37) % 251 for i in range(count))


def _filled(code: int, first: int) -> Any:
    picture = P(WIDTH, HEIGHT, code)
    for y in range(HEIGHT):
        picture.Row[y] = _bytes(picture.RowSize, first + y * 11)
    return picture


def _table(count: int) -> list[int]:
    return [i % 5 - 2 for i in range(25)] if count == 25 else [i * 7 % 256 for i in range(count)]


def _digest(data: bytes) -> str:
    return hashlib.md5(data).hexdigest().upper()


def _show(value: Any, kind: str | None) -> str:
    if kind is None:
        return "nothing"
    if kind == "String":
        return _digest(value.encode() if isinstance(value, str) else value or b"")
    if value is None:
        return "Nil"
    if kind in _NUMBERS:
        return str(value)
    if kind == "PictureTQX":
        rows = [bytes(value.Row(y)) for y in range(value.Height)] if value.Memory else []
        return f"{value.Width}x{value.Height} {value.ImageFormat} {_digest(b''.join(rows))}"
    if kind == "Picture":
        return _show(P(value), "PictureTQX")
    if kind == "MemoryBlock":
        return "foreign" if value.Size < 0 else _digest(value.StringValue(0, value.Size) or b"")
    return "object"


def _values(case: Case, other: Any, block: Any, text: bytes) -> list[Any]:
    picture = _filled(2, 30).CopyPictureWithMask()
    known = {"Nil": None, "True": True, "other": other, "hostPicture": picture, "block": block, "text": text}
    known |= {"&cFF8040": tqx.Color(0xFF8040), "Table(numbers)": _table(256), "Table(25)": _table(25)}
    return [known[word] if word in known else float(word) if "." in word else int(word) for word in case.arguments]


def _run(case: Case, picture: Any, values: list[Any], block: Any, text: bytes) -> Any:
    if case.kind == "constructor":
        return picture.__init__(*values)
    if case.kind == "setter":
        getattr(picture, case.name)[tuple(values)] = block if case.result == "MemoryBlock" else text
        return None
    member = getattr(P if case.kind == "shared" else picture, case.name)
    return member if case.kind == "property" else member(*values)


def line(number: int, case: Case, code: int) -> str:
    """The line that the script prints for a case, from Python."""
    picture, other = _filled(code, 5), _filled(code, 90)
    text = _bytes(640, 3)
    block = tqx.framework.MemoryBlock(640)
    memoryview(block)[:] = text
    try:
        result = _run(case, picture, _values(case, other, block, text), block, text)
        told = _show(result, None if case.kind in ("constructor", "setter") else case.result)
    except tqx.RuntimeException as error:
        told = error.Message
    shown = f"{_show(picture, 'PictureTQX')} {_show(other, 'PictureTQX')}"
    return f"{number} {case.kind} {case.name} {code} {told} {shown}"


if __name__ == "__main__":
    for index, each in enumerate(cases()):
        for image_format in FORMATS:
            print(line(index, each, image_format))
