#!/usr/bin/python3
"""The house, read off the includes: holds the floors, and draws them.

    tools/house.py                    complains of every include that runs upward or in a circle; exit 1 then
    tools/house.py --svg docs/house.svg   draws the rooms and who includes whom
"""
import argparse
import collections
import pathlib
import re
import sys

TOP = pathlib.Path(__file__).resolve().parent.parent

# From the street up. A room may include rooms below its own in this table and in its own building;
# rooms in one line stand on one floor, and those of a floor may lean on the ones named before them.
STREET = ["sdk", "platform"]
BUILDINGS = {
    "plugin": [["services"], ["rows"], ["buffer"], ["ops", "geometry", "filters", "interop"], ["classes"]],
    "host": [["messages"], ["objects"], ["calls"], ["images"], ["framework"], ["reference"], ["check"], ["script"]],
}
# Assemblers stand outside and see everything; nothing includes them.
ASSEMBLERS = ["tqx", "browser", "python", "tests", "bench", "fuzz", "examples"]

# Rooms that must know nothing of some room below them.
STRANGERS = {"host/images": {"host/objects", "host/calls"}}

INCLUDE = re.compile(r'^\s*#\s*include\s+"([^"]+)"', re.M)


def room_of(path):
    parts = path.split("/")
    return "/".join(parts[:2]) if parts[0] in BUILDINGS and len(parts) > 2 else parts[0]


def heights():
    """Every room's height; equal heights never meet."""
    height = {room: i for i, room in enumerate(STREET)}
    for building, floors in BUILDINGS.items():
        level = len(STREET)
        for floor in floors:
            for room in floor:
                height[f"{building}/{room}"] = level
                level += 1
    return height


def sources():
    for folder in STREET + list(BUILDINGS) + ASSEMBLERS:
        for path in sorted((TOP / folder).rglob("*")):
            if path.suffix in (".h", ".cpp"):
                yield path.relative_to(TOP).as_posix()


def read_includes():
    return {source: INCLUDE.findall((TOP / source).read_text(errors="replace")) for source in sources()}


def complaint_about(source, included, height):
    """What is wrong with one include; None when nothing is."""
    here, there = room_of(source), room_of(included)
    if here == there:
        return None
    if there not in height:
        if here in ASSEMBLERS and there in ASSEMBLERS:
            return None
        return "nothing includes an assembler" if there in ASSEMBLERS else "no such room"
    if here in ASSEMBLERS:
        return None
    if here not in height:
        return "stands in no room"
    if there not in STREET and here.split("/")[0] != there.split("/")[0]:
        return "the buildings meet only in the street"
    if there in STRANGERS.get(here, ()):
        return "the room knows nothing of that one"
    return None if height[there] < height[here] else "runs upward"


def circles(includes):
    """Circles between files, each once, as lists of files."""
    found, state, path = [], {}, []

    def walk(source):
        state[source] = "open"
        path.append(source)
        for included in includes.get(source, ()):
            if state.get(included) == "open":
                found.append(path[path.index(included):] + [included])
            elif included in includes and included not in state:
                walk(included)
        path.pop()
        state[source] = "done"

    for source in includes:
        if source not in state:
            walk(source)
    return found


def check(includes):
    height = heights()
    complaints = []
    for source, names in includes.items():
        for included in names:
            what = complaint_about(source, included, height)
            if what:
                complaints.append(f"{source} includes {included}: {what}")
    complaints += ["a circle: " + " -> ".join(circle) for circle in circles(includes)]
    return complaints


# --- The drawing -------------------------------------------------------------------------------

WORDS = {
    "sdk": "the interface between hosts and plug-ins",
    "platform": "worlds, pixel memory, windows of files, ticks",
    "plugin/services": "the host's functions, as called",
    "plugin/rows": "pure functions over bytes",
    "plugin/buffer": "formats, storage, views, rows",
    "plugin/ops": "fills, copies",
    "plugin/geometry": "mirrors, turns, scaling",
    "plugin/filters": "curves, blurs, dither",
    "plugin/interop": "host pictures",
    "plugin/classes": "member tables, entry point",
    "host/messages": "what is said of faults",
    "host/objects": "objects, classes, values",
    "host/calls": "declarations, dynamic calls",
    "host/images": "image files",
    "host/framework": "the classes of scripts",
    "host/reference": "members as text",
    "host/check": "a stranger's checks",
    "host/script": "the language",
}
ROOM_HEIGHT, GAP, WIDTH = 44, 10, 420


def box(x, y, width, name, words):
    return (f'<g><rect x="{x}" y="{y}" width="{width}" height="{ROOM_HEIGHT}" rx="5" class="room"/>'
            f'<text x="{x + width / 2:g}" y="{y + 18}" class="name">{name}/</text>'
            f'<text x="{x + width / 2:g}" y="{y + 34}" class="words">{words}</text></g>')


def sizes_of(includes):
    """Every room's size in hundreds of lines, as words."""
    count = collections.Counter()
    for source in includes:
        count[room_of(source)] += (TOP / source).read_text(errors="replace").count("\n")
    return {room: f"{max(100, round(lines, -2)):,} lines" for room, lines in count.items()}


def draw(includes):
    size = sizes_of(includes)
    parts = []
    left = {"plugin": 20, "host": 20 + WIDTH + 40}
    tallest = max(len(floors) for floors in BUILDINGS.values())
    ground = 60 + tallest * (ROOM_HEIGHT + GAP)
    for building, floors in BUILDINGS.items():
        x, top = left[building], ground - len(floors) * (ROOM_HEIGHT + GAP)
        parts.append(f'<path d="M{x - 8} {top - 2} L{x + WIDTH / 2:g} {top - 40} L{x + WIDTH + 8} {top - 2} Z" class="roof"/>')
        parts.append(f'<text x="{x + WIDTH / 2:g}" y="{top - 12}" class="title">{building}/</text>')
        for level, floor in enumerate(floors):
            y = ground - (level + 1) * (ROOM_HEIGHT + GAP)
            width = (WIDTH - GAP * (len(floor) - 1)) / len(floor)
            for i, room in enumerate(floor):
                key = f"{building}/{room}"
                words = WORDS[key] if len(floor) == 1 else ""
                label = f"{words}, {size[key]}" if words else size[key]
                parts.append(box(x + i * (width + GAP), y, width, room, label))
    for i, room in enumerate(reversed(STREET)):
        y = ground + 6 + i * (ROOM_HEIGHT + GAP)
        parts.append(box(20, y, 2 * WIDTH + 40, room, f"{WORDS[room]}, {size[room]}"))
    height = ground + 6 + len(STREET) * (ROOM_HEIGHT + GAP) + 10
    style = (".room{fill:#f4f1ea;stroke:#8a7f6b} .roof{fill:#c96f4a} .name{font:bold 14px sans-serif;fill:#222}"
             " .words{font:11px sans-serif;fill:#444} .title{font:bold 15px sans-serif;fill:#fff}"
             " text{text-anchor:middle}")
    body = "\n".join(parts)
    return (f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {2 * WIDTH + 80} {height}" role="img">\n'
            f"<title>The house: the plug-in and the desk host, floor by floor, over the street they meet in</title>\n"
            f"<style>{style}</style>\n{body}\n</svg>\n")


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--svg", type=pathlib.Path, metavar="FILE", help="draw the house into FILE")
    arguments = parser.parse_args()
    includes = read_includes()
    if arguments.svg:
        arguments.svg.write_text(draw(includes))
    complaints = check(includes)
    print("\n".join(complaints) if complaints else f"{len(includes)} sources: every include runs downward")
    return 1 if complaints else 0


if __name__ == "__main__":
    sys.exit(main())
