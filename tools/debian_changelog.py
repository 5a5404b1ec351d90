#!/usr/bin/python3
"""CHANGELOG.md as Debian writes it: debian_changelog.py CHANGELOG.md VERSION MAINTAINER >changelog

Releases are headings like "## 2.0.0 (2026-11-22)". What stands above them under "## Unreleased" is
that of VERSION, of today; releases without a date were none, and are left out.
"""

import datetime
import email.utils
import os
import pathlib
import re
import sys
import textwrap
import time

HEADING = re.compile(r"^## (\S+)(?:.*(\d{4}-\d\d-\d\d))?.*\n", re.M)


def today():
    """Now, or when the build is told that it is."""
    now = float(os.environ.get("SOURCE_DATE_EPOCH") or time.time())
    return datetime.datetime.fromtimestamp(now, datetime.timezone.utc)


def releases(text):
    """Name, date and text of each release, the latest first."""
    parts = HEADING.split(text)[1:]
    return list(zip(parts[0::3], parts[1::3], parts[2::3]))


def entries(text):
    """The lines of a release: rooms in brackets, changes behind stars."""
    for line in filter(None, text.splitlines()):
        if line.startswith("### "):
            yield f"\n  [ {line[4:]} ]"
        else:
            yield textwrap.fill(line.removeprefix("- "), 78, initial_indent="  * ", subsequent_indent="    ")


def release(version, date, text, maintainer):
    body = "\n".join(entries(text)).lstrip("\n")
    return f"picturetqx ({version}) stable; urgency=medium\n\n{body}\n\n -- {maintainer}  {email.utils.format_datetime(date)}\n"


def main():
    file, version, maintainer = sys.argv[1:]
    found = releases(pathlib.Path(file).read_text(encoding="utf-8"))
    if not found or found[0][0] not in ("Unreleased", version):
        sys.exit(f"{file} begins neither with Unreleased nor with {version}")
    for name, date, text in found:
        if name == "Unreleased":
            print(release(version, today(), text, maintainer))
        elif date:
            day = datetime.datetime.fromisoformat(date + "T12:00:00+00:00")
            print(release(name, day, text, maintainer))


if __name__ == "__main__":
    main()
