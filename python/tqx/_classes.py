"""Python classes made of the records that the host and its plug-ins register.

Nothing here names a member: whatever a plug-in declares, its class in Python has.
"""

from __future__ import annotations

import json
from typing import Any

from . import _documentation, _native, _pictures

Record = dict[str, Any]


class HostObject(_native.Object):
    """What all classes of the host and of plug-ins derive from."""

    def __init_subclass__(cls, **keywords: Any) -> None:
        super().__init_subclass__(**keywords)
        if "_host_class" in cls.__dict__:
            return
        if cls.__dict__.get("__slots__"):
            raise TypeError(f"{cls.__name__}: classes derived from the host's can't have __slots__")
        _native.derive(cls, f"{cls.__module__}.{cls.__qualname__}")


def read_records() -> dict[str, Record]:
    """The records of all classes by name, in the order of their registration."""
    return {record["name"]: record for record in json.loads(_native.records())["classes"]}


def method_names(record: Record) -> list[str]:
    """The names of a class's methods, each once, without its constructors."""
    methods = record["methods"] + record["sharedMethods"]
    return [name for name in dict.fromkeys(method["name"] for method in methods) if name != "Constructor"]


def _members_of(record: Record) -> dict[str, Any]:
    owner = record["name"]
    members: dict[str, Any] = {constant["name"]: constant["value"] for constant in record["constants"]}
    for prop in record["properties"]:
        text = _documentation.of_property(prop)
        members[prop["name"]] = _native.property(owner, prop["name"], text)
    for name in method_names(record):
        members[name] = _native.method(owner, name, _documentation.of_method(record, name))
    return members


def make_class(record: Record, base: type) -> type:
    """The Python class of a record; ``base`` is that of its superclass, or HostObject."""
    members = {
        "_host_class": record["name"],
        "__module__": "tqx",
        "__doc__": _documentation.of_class(record),
        **_members_of(record),
    }
    if _pictures.is_picture(record):
        members.update(_pictures.members())
    made = type(record["name"], (base,), members)
    _native.register_type(record["name"], made)
    return made


def make_classes(known: dict[str, type]) -> None:
    """Adds the classes of all records that have none yet to those known by name."""
    exceptions = {"Variant"}
    for name, record in read_records().items():
        if name in exceptions or record["superclass"] in exceptions or name == "RuntimeException":
            exceptions.add(name)
        elif name not in known:
            known[name] = make_class(record, known.get(record["superclass"], HostObject))
