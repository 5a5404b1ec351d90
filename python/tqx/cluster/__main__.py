"""The command ``python3 -m tqx.cluster``."""

from __future__ import annotations

import argparse
import sys

from . import _each


def _parser() -> argparse.ArgumentParser:
    parser = argparse.ArgumentParser(prog="python3 -m tqx.cluster", description="Pictures on many processes.")
    commands = parser.add_subparsers(dest="command", required=True)
    each = commands.add_parser(
        "each",
        help="run a script or a function for each file",
        description="Runs a script (its arguments are the file and the result's path) or a function(file, result) "
        "for each file. A result is written whole or not at all. Exit code 1 when files failed; they are named.",
    )
    each.add_argument("program", metavar="SCRIPT_OR_MODULE:FUNCTION")
    each.add_argument("files", nargs="+", metavar="FILE")
    each.add_argument("--out", required=True, metavar="FOLDER", help="where results go, under their files' names")
    each.add_argument("--suffix", metavar=".EXT", help="the results' extension; else the file's")
    each.add_argument("--scheduler", metavar="ADDRESS", help="a running cluster; else a process a core of this machine")
    each.add_argument("--resume", action="store_true", help="leave out files whose results are there and newer")
    return parser


def main(words: list[str] | None = None) -> int:
    """Runs the command; gives its exit code."""
    arguments = _parser().parse_args(words)
    try:
        return _each.each(
            arguments.program,
            arguments.files,
            arguments.out,
            scheduler=arguments.scheduler,
            resume=arguments.resume,
            suffix=arguments.suffix,
        )
    except _each.UsageError as error:
        print(f"tqx.cluster: {error}", file=sys.stderr)
        return 2


if __name__ == "__main__":
    sys.exit(main())
