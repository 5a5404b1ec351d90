"""Many pictures, and pictures larger than a machine, on Dask's distributed engine.

``python3 -m tqx.cluster each SCRIPT --out FOLDER FILE...`` and :func:`each` run a script or a function for each file;
:func:`apply` runs a member of the plug-in on a ``dask.array`` piece by piece, with the bytes of one call on the
whole; :func:`open` makes such an array of a file.
"""

from __future__ import annotations

from ._apply import apply
from ._each import UsageError, each
from ._files import open
from ._operations import CannotBeCut

__all__ = ["CannotBeCut", "UsageError", "apply", "each", "open"]
