"""Where the plug-in is."""

from __future__ import annotations

import os
import pathlib

_NAME = "PictureTQX.so"


def find() -> pathlib.Path:
    """The plug-in that the environment's TQX_PLUGIN names, that of the package, or the one installed with it."""
    named = os.environ.get("TQX_PLUGIN")
    if named:
        return pathlib.Path(named).resolve()
    package = pathlib.Path(__file__).resolve().parent
    beside = [package / _NAME] + [folder / "lib" / "tqx" / _NAME for folder in package.parents]
    for path in beside:
        if path.exists():
            return path
    raise ImportError(f"{_NAME} is neither beside {package} nor in a lib/tqx above it; TQX_PLUGIN can name it")
