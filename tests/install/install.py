#!/usr/bin/env python3
"""What is installed works wherever it comes to lie: install.py BUILD SOURCE

Installs the build, moves it to another folder, runs the command there, and builds the examples that
find it by find_package: a plug-in, which the command must pass, and a program with the host in it.
"""

import gzip
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile

GAMMA = """
Dim photo As New PictureTQX(GetFolderItem(App.Arguments(0)).OpenAsPicture)
GetFolderItem(App.Arguments(1)).SaveAsPicture(photo.GammaFilter(Nil, 2.2).CopyPicture)
"""

ENVIRONMENT = {name: value for name, value in os.environ.items() if name != "TQX_PLUGIN"}


def run(*words, wanted=0):
    """What a program prints, on either stream."""
    ended = subprocess.run(
        [str(word) for word in words], env=ENVIRONMENT, text=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT
    )
    if ended.returncode != wanted:
        sys.exit(f"{' '.join(map(str, words))} ended with {ended.returncode}:\n{ended.stdout}")
    return ended.stdout


def require(holds, what):
    if not holds:
        sys.exit(what)


def installed(build, folder):
    """The build, installed, moved and found whole."""
    run("cmake", "--install", build, "--prefix", folder / "first")
    shutil.move(folder / "first", folder / "moved")
    parts = "bin/tqx lib/tqx/PictureTQX.so lib/tqx/PictureTQX.explain share/man/man1/tqx.1.gz"
    for part in (parts + " share/bash-completion/completions/tqx share/zsh/site-functions/_tqx").split():
        require((folder / "moved" / part).is_file(), f"{part} is not installed")
    return folder / "moved"


def command_has_its_own_plugin(prefix):
    tqx, plugin = prefix / "bin/tqx", prefix / "lib/tqx/PictureTQX.so"
    version = run(tqx, "--version").split()[1]
    page = gzip.decompress((prefix / "share/man/man1/tqx.1.gz").read_bytes()).decode()
    require(f'"PictureTQX {version}"' in page.splitlines()[0], "the manual's page has another version than the command")
    require("PictureTQX" in run(tqx, "members", "PictureTQX.Scale"), "no members")
    explained = run(tqx, "run", "--explain", "-e", "Dim p As New PictureTQX(-1, 1, 1)")
    require("<code>:1:" in explained, f"nothing is explained: {explained!r}")
    plugin.rename(plugin.with_suffix(".away"))
    require(str(plugin) in run(tqx, "run", "-e", "", wanted=1), "another plug-in than the one beside the command")
    plugin.with_suffix(".away").rename(plugin)


def built(example, prefix, folder):
    """The folder where an example is built against what is installed."""
    run(
        "cmake",
        "-G",
        "Ninja",
        "-S",
        example,
        "-B",
        folder,
        f"-DCMAKE_PREFIX_PATH={prefix}",
        "-DCMAKE_CXX_FLAGS=-Wall -Werror",
    )
    run("cmake", "--build", folder)
    return folder


def plugin_of_ones_own(prefix, source, folder):
    build = built(source / "examples/plugin", prefix, folder / "plugin")
    checked = run(prefix / "bin/tqx", "--plugin", build / "ColorMixer.so", "check")
    for status in ("warn", "fail", "crash", "timeout"):
        require(f"\n{status} " not in checked, checked)
    run("ctest", "--test-dir", build, "--no-tests=error")
    told = run(prefix / "bin/tqx", "--plugin", build / "ColorMixer.so", "run", source / "examples/plugin/mix.rbs")
    wanted = "half and half: 128 0 128\na quarter: 191 0 64\ndarker: 64 0 64\n"
    require(told == wanted, f"mix.rbs printed {told!r}")


def program_of_ones_own(prefix, source, folder):
    build = built(source / "examples/host", prefix, folder / "host")
    photo = source / "examples/photos/seeds.jpg"
    run(build / "brighten", photo, folder / "ours.png")
    run(prefix / "bin/tqx", "run", "-e", GAMMA, photo, folder / "command.png")
    require(
        (folder / "ours.png").read_bytes() == (folder / "command.png").read_bytes(), "other bytes than the command's"
    )
    require("Usage" in run(build / "brighten", wanted=2), "no usage")


def main():
    build, source = map(pathlib.Path, sys.argv[1:])
    with tempfile.TemporaryDirectory(prefix="tqx-install-") as name:
        folder = pathlib.Path(name)
        prefix = installed(build, folder)
        command_has_its_own_plugin(prefix)
        plugin_of_ones_own(prefix, source, folder)
        program_of_ones_own(prefix, source, folder)


if __name__ == "__main__":
    main()
