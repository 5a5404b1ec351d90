"""Writes the stubs of the package from the records: ``python3 -m tqx._stub FOLDER/__init__.pyi``."""

from __future__ import annotations

import keyword
import pathlib
import sys
from typing import Any

from . import _classes, _errors, _pictures

Record = dict[str, Any]

_HEAD = '''\
"""Made by the build from the records of the plug-in."""

from collections.abc import Iterator, Sequence
from contextlib import AbstractContextManager
from os import PathLike
from typing import Any, ClassVar, Protocol, Union, overload

import numpy as np
from numpy.typing import NDArray

'''
_FUNCTIONS = """
__version__: str

def explain() -> str: ...
def explaining() -> AbstractContextManager[list[str]]: ...
def imread(
    path: Union[str, PathLike[str]], *, max_pixels: int | None = ..., upright: bool = ...
) -> NDArray[np.uint8]: ...
def imwrite(
    path: Union[str, PathLike[str]], image: NDArray[np.uint8] | {pictures}, *, quality: int | None = ...
) -> None: ...
def load_plugin(path: str) -> list[str]: ...
"""
_COLOR = """
class Color(int):
    def __new__(cls, red: int, green: int | None = ..., blue: int | None = ...) -> Color: ...
    @property
    def Red(self) -> int: ...
    @property
    def Green(self) -> int: ...
    @property
    def Blue(self) -> int: ...
"""
_PICTURE = """\
    def __array__(self, dtype: Any = ..., copy: bool | None = ...) -> NDArray[Any]: ...
    @property
    def __array_interface__(self) -> dict[str, Any]: ...
    def tobytes(self) -> bytes: ...
    def rows(self, writable: bool = ...) -> Iterator[NDArray[Any]]: ...
    @classmethod
    def from_array(cls, array: Any, copy: bool = ...) -> {name}: ...
"""
_PLAIN = {
    **dict.fromkeys(("Integer", "Int64", "UInt32", "UInt8"), "int"),
    **dict.fromkeys(("Double", "Single"), "float"),
    "Boolean": "bool",
    "Variant": "Any",
}


def taken(kind: str) -> str:
    """The Python type of a parameter."""
    if kind.endswith("()"):
        return f"Sequence[{taken(kind[:-2])}] | None"
    if kind in _PLAIN:
        return _PLAIN[kind]
    special = {
        "String": "str | bytes",
        "Color": "Color | int",
        "FolderItem": "FolderItem | str | PathLike[str] | None",
        "MemoryBlock": "MemoryBlock | bytes | None",
    }
    return special.get(kind, f"{kind} | None")


def given(kind: str | None) -> str:
    """The Python type of a result."""
    if not kind:
        return "None"
    if kind.endswith("()"):
        return f"list[{given(kind[:-2])}] | None"
    special = {**_PLAIN, "String": "str | bytes | None", "Color": "Color"}
    return special.get(kind, f"{kind} | None")


def _parameter(parameter: Record, required: bool) -> str:
    name = parameter["name"] + ("_" if keyword.iskeyword(parameter["name"]) else "")
    default = " = ..." if parameter["optional"] and not required else ""
    return f"{name}: {taken(parameter['type'])}{default}"


def _parameters(method: Record, overloads: list[Record]) -> list[str]:
    """The parameters; one that may be left out must stand where another overload is what is meant then."""
    lengths = {len(other["parameters"]) for other in overloads if other is not method}
    return [_parameter(p, i in lengths) for i, p in enumerate(method["parameters"])]


def _function(name: str, parameters: list[str], result: str, indent: str = "    ") -> str:
    return f"{indent}def {name}({', '.join(parameters)}) -> {result}: ...\n"


def _overloads(name: str, methods: list[Record], *, static: bool = False) -> str:
    """All forms of a method; those that look the same in Python once."""
    forms: dict[tuple[str, ...], str] = {}
    for method in methods:
        types = tuple(taken(p["type"]) for p in method["parameters"])
        self = [] if static else ["self"]
        result = "None" if name == "__init__" else given(method["result"])
        forms.setdefault(types, _function(name, self + _parameters(method, methods), result))
    marks = ("    @overload\n" if len(forms) > 1 else "") + ("    @staticmethod\n" if static else "")
    return "".join(marks + form for form in forms.values())


def _key(method: Record) -> str:
    kinds = [taken(p["type"]) for p in method["parameters"]]
    return kinds[0] if len(kinds) == 1 else f"tuple[{', '.join(kinds)}]"


def _indexed(owner: str, name: str, methods: list[Record]) -> str:
    """What an assignable method is: it is called, and indexed."""
    text = f"\nclass _{owner}_{name}(Protocol):\n" + _overloads("__call__", methods)
    for special, last in (("__getitem__", ""), ("__setitem__", "value")):
        mark = "    @overload\n" if len(methods) > 1 else ""
        for method in methods:
            value = [f"value: {taken(method['result'])}"] if last else []
            result = "None" if last else given(method["result"])
            text += mark + _function(special, ["self", f"key: {_key(method)}", *value], result)
    return text


def _members(record: Record) -> tuple[str, str]:
    """The lines of a class's members, and the protocols that they need."""
    protocols, lines = "", ""
    for constant in record["constants"]:
        lines += f"    {constant['name']}: ClassVar[int]\n"
    for prop in record["properties"]:
        lines += "    @property\n" + _function(prop["name"], ["self"], given(prop["type"]))
        if prop["write"]:
            value = f"value: {taken(prop['type'])}"
            lines += f"    @{prop['name']}.setter\n" + _function(prop["name"], ["self", value], "None")
    for name in _classes.method_names(record):
        own = [method for method in record["methods"] if method["name"] == name]
        shared = [method for method in record["sharedMethods"] if method["name"] == name]
        if any(method["assignable"] for method in own):
            protocols += _indexed(record["name"], name, own)
            lines += f"    @property\n    def {name}(self) -> _{record['name']}_{name}: ...\n"
        else:
            lines += _overloads(name, own + shared, static=bool(shared))
    for event in record["events"]:
        parameters = ["self", *(_parameter(p, True) for p in event["parameters"]), "/"]
        lines += _function(event["name"], parameters, given(event["result"]))
    return lines, protocols


def class_stub(record: Record) -> str:
    """The stub of one class, after the protocols of its assignable methods."""
    constructors = [method for method in record["methods"] if method["name"] == "Constructor"]
    lines, protocols = _members(record)
    if constructors:
        lines = _overloads("__init__", constructors) + lines
    if _pictures.is_picture(record):
        lines += _PICTURE.format(name=record["name"])
    base = record["superclass"] or "HostObject"
    return f"{protocols}\nclass {record['name']}({base}):\n{lines or '    ...' + chr(10)}"


def _exceptions() -> str:
    text = "\nclass RuntimeException(Exception):\n    ErrorNumber: int\n"
    text += "    @property\n    def Message(self) -> str: ...\n"
    for name, kin in _errors.KIN.items():
        text += f"\nclass {name}(RuntimeException, {kin.__name__}): ...\n"
    return text


def write(path: pathlib.Path) -> None:
    """Writes the stub of the package to a path, and that of its framework beside it."""
    import tqx

    records = _classes.read_records()
    made = {name: record for name, record in records.items() if name in tqx._made}
    own = {name: record for name, record in made.items() if name in tqx.__all__}
    rest = {name: record for name, record in made.items() if name not in own}
    pictures = " | ".join(name for name in own if _pictures.is_picture(own[name])) or "Any"
    text = _HEAD + "from . import framework as framework\n"
    text += "".join(f"from .framework import {name}\n" for name in rest)
    text += "\nclass HostObject: ...\n" + _COLOR + _exceptions()
    text += "".join(map(class_stub, own.values())) + _FUNCTIONS.format(pictures=pictures)
    path.write_text(text, encoding="utf-8")
    names = ", ".join(["Color", "HostObject", *own])
    text = _HEAD + f"from . import {names}\n" + "".join(map(class_stub, rest.values()))
    path.with_name("framework.pyi").write_text(text, encoding="utf-8")


if __name__ == "__main__":
    write(pathlib.Path(sys.argv[1]))
