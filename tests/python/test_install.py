"""The package where an installation puts it."""

from __future__ import annotations

import os
import pathlib
import subprocess
import sys

import tqx


def test_an_installation_finds_its_plug_in(tmp_path: pathlib.Path) -> None:
    install = ["cmake", "--install", os.environ["TQX_BUILD_DIR"], "--prefix", str(tmp_path)]
    subprocess.run(install, check=True, capture_output=True)
    version = f"python{sys.version_info.major}.{sys.version_info.minor}"
    environment = {"PATH": os.environ["PATH"], "PYTHONPATH": str(tmp_path / "lib" / version / "dist-packages")}
    code = (
        "import tqx, tqx.cluster, tqx._plugin;"
        "print(tqx.PictureTQX(3, 2, 1).Valid, tqx._plugin.find(), tqx.__file__, len(tqx.PictureTQX.Scale.__doc__) > 200)"
    )
    ended = subprocess.run([sys.executable, "-c", code], env=environment, capture_output=True, text=True, check=True)
    valid, plugin, module, documented = ended.stdout.split()
    assert (valid, documented) == ("True", "True")
    assert plugin == str(tmp_path / "lib" / "tqx" / "PictureTQX.so")
    assert module.startswith(str(tmp_path))
    assert (pathlib.Path(module).parent / "__init__.pyi").exists()


def test_the_package_has_the_version_of_the_command() -> None:
    told = subprocess.run([os.environ["TQX_COMMAND"], "--version"], capture_output=True, text=True, check=True).stdout
    assert told == f"tqx {tqx.__version__}\n"
