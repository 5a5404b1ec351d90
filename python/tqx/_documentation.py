"""Documentation strings: the declarations of the records, and what the page of members says of them."""

from __future__ import annotations

import functools
import pathlib
import re
from typing import Any

PAGE = pathlib.Path(__file__).with_name("members.md")
_FENCE = re.compile(r"^```\n(.*?)^```\n(.*?)(?=^```|^## |\Z)", re.M | re.S)
_ROW = re.compile(r"^\| `(\w+)` \| [^|]* \| [^|]* \| ([^|]*) \|$", re.M)


def _names_of(declarations: str) -> list[str]:
    lines = (line.removeprefix("Event ") for line in declarations.splitlines())
    return list(dict.fromkeys(re.split(r"[^\w.]", line)[0].split(".")[-1] for line in lines if line))


def _part_for(name: str, text: str, names: list[str]) -> str:
    """The paragraphs of a text that speak of one of its names, or of none in particular."""
    kept = []
    for part in re.split(r"\n(?=- )|\n\n", text.strip()):
        subjects = [other for other in names if re.search(rf"`{other}`", part)]
        if name in subjects or not subjects or not part.startswith("- "):
            kept.append(part)
    return "\n".join(kept)


@functools.cache
def _texts() -> dict[str, str]:
    """What the page says, by the name of a method or an event."""
    page = PAGE.read_text(encoding="utf-8") if PAGE.exists() else ""
    texts: dict[str, str] = {}
    for declarations, text in _FENCE.findall(page):
        names = _names_of(declarations)
        for name in names:
            texts[name] = (texts.get(name, "") + "\n" + _part_for(name, text, names)).strip()
    return texts


@functools.cache
def _property_texts() -> dict[str, str]:
    page = PAGE.read_text(encoding="utf-8") if PAGE.exists() else ""
    texts: dict[str, str] = {}
    last = ""
    for name, text in _ROW.findall(page):
        last = last if text == "likewise" else text
        texts[name] = last
    return texts


def _with_text(declarations: list[str], text: str) -> str:
    return "\n".join(declarations) + (f"\n\n{text}" if text else "")


def of_method(record: dict[str, Any], name: str) -> str:
    """All declarations of a method's name, and what the page says of it."""
    own = [method["declaration"] for method in record["methods"] if method["name"] == name]
    shared = [method["declaration"] for method in record["sharedMethods"] if method["name"] == name]
    return _with_text(own + [f"Shared {text}" for text in shared], _texts().get(name, ""))


def of_property(prop: dict[str, Any]) -> str:
    """A property's type, and what the page says of it."""
    access = "" if prop["write"] else " (read only)"
    return _with_text([f"{prop['name']} As {prop['type']}{access}"], _property_texts().get(prop["name"], ""))


def of_class(record: dict[str, Any]) -> str:
    """The constructors and events of a class."""
    constructors = [method["declaration"] for method in record["methods"] if method["name"] == "Constructor"]
    lines = [text.replace("Constructor", record["name"], 1) for text in constructors]
    lines += [f"Event {event['declaration']}" for event in record["events"]]
    text = "\n".join(_texts().get(event["name"], "") for event in record["events"])
    return _with_text(lines, _texts().get("Constructor", "") if constructors else text)
