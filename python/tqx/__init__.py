"""Pictures of PictureTQX from Python.

The classes of the plug-in, and those of the host in ``tqx.framework``, are made at import from the records that
the plug-in registers: methods with their overloads, properties, constants, events. ``help(tqx.PictureTQX)`` shows
them.

    import tqx

    photo = tqx.PictureTQX.from_array(tqx.imread("photo.jpg"))
    tqx.imwrite("bright.jpg", photo.GammaFilter(None, 2.2))
"""

from __future__ import annotations

from . import _classes, _errors, _native, _plugin, framework
from ._color import Color
from ._explain import explain, explaining
from ._images import imread, imwrite
from ._version import __version__

_made: dict[str, type] = {}


def load_plugin(path: str) -> list[str]:
    """Loads a plug-in; its classes become attributes of this module. Gives their names."""
    names = _native.load_plugin(str(path))
    _classes.make_classes(_made)
    for name, made in _made.items():
        if name in names:
            globals()[name] = made
        elif name not in globals():
            setattr(framework, name, made)
    __all__.extend(name for name in names if name not in __all__)
    return names


__all__ = ["Color", "__version__", "explain", "explaining", "framework", "imread", "imwrite", "load_plugin"]
for _name, _exception in _errors.make_exceptions(_classes.read_records()).items():
    globals()[_name] = _exception
    __all__.append(_name)
load_plugin(str(_plugin.find()))
