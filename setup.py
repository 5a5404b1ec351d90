"""The Python package as a wheel: the build of the package's own part, with the plug-in in it."""

import pathlib
import re

from skbuild import setup

version = re.search(r"VERSION ([\d.]+)", pathlib.Path("CMakeLists.txt").read_text().split("project(", 1)[1])

setup(
    name="tqx",
    version=version[1],
    description="Exact pictures: the PictureTQX plug-in from Python",
    license="MIT",
    python_requires=">=3.9",
    packages=["tqx", "tqx.cluster"],
    package_dir={"tqx": "python/tqx", "tqx.cluster": "python/tqx/cluster"},
    install_requires=["numpy"],
    extras_require={"cluster": ["dask", "distributed"]},
    cmake_install_dir="python/tqx",
    cmake_install_target="install-python",
    cmake_args=["-DTQX_TESTS=OFF", "-DTQX_BENCHMARKS=OFF", "-DCMAKE_BUILD_TYPE=Release"],
)
