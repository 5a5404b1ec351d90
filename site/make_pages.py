#!/usr/bin/env python3
"""Makes the sources of the pages: make_pages.py TQX PHOTO FOLDER

TQX is the command, which runs every script that a page shows, PHOTO the photograph that they work
on, FOLDER what becomes of it all: Markdown, pictures and styles, for MkDocs to read.
"""

import html
import json
import re
import shutil
import subprocess
import sys
from pathlib import Path

SITE = Path(__file__).resolve().parent
ROOT = SITE.parent

# The gallery's sections and the members shown in each.
SECTIONS = {
    "Tone": "GammaFilter GainFilter TransferFilter SolarizeFilter AutoLevel Invert",
    "Blur and sharpen": "BoxBlurFilter BoxBlurFractionalFilter UnsharpFilter ApplyMatrix",
    "Effects": "DitherFilter StampFilter OilFilter DiffuseFilter EngraveFilter NeonFilter",
    "Mirrors, turns and scaling": "HMirror VMirror Rotate180 Rotate90 Rotate90slow Rotate270 Rotate270slow Rotate "
    "Scale ScaleFast",
    "Fills and copies": "ClearRect FillRect FillRectRGB CopyPixels",
    "Views": "ClipImage MirroredView RedChannel GreenChannel BlueChannel",
    "Rows as bytes": "RawRow Row RowInFormat",
    "Host pictures": "DrawPictureRGB DrawPictureRedToGrayChannel DrawPictureGreenToGrayChannel "
    "DrawPictureBlueToGrayChannel DrawMaskedPictureRGB DrawMaskedPictureApplyMaskRGB",
}

CHANNELS = ("red", "green", "blue", "gray", "alpha")


class Pages:
    def __init__(self, tqx, photo, folder):
        self.tqx = tqx
        self.folder = folder
        self.images = folder / "images"
        shutil.rmtree(folder, ignore_errors=True)
        self.images.mkdir(parents=True)
        self.photo = self.images / "photo.png"
        self.run(SITE / "figures/photo.rbs", photo, self.photo)
        self.constants = self.read_constants()

    def command(self, *words):
        done = subprocess.run([self.tqx, *map(str, words)], capture_output=True, text=True)
        if done.returncode != 0:
            raise SystemExit(f"tqx {' '.join(map(str, words))}: {done.stderr or done.stdout}")
        return done.stdout

    def run(self, script, *words):
        return self.command("run", script, *words)

    def read_constants(self):
        classes = json.loads(self.command("members", "--json"))["classes"]
        picture = next(c for c in classes if c["name"] == "PictureTQX")
        return {constant["name"]: constant["value"] for constant in picture["constants"]}

    def write(self, name, text):
        (self.folder / name).write_text(text, encoding="utf-8")

    def figure(self, script, name, *words):
        """A picture that a script of figures/ makes of the photograph, as its name below images/."""
        self.run(SITE / "figures" / script, self.photo, self.images / name, *words)
        return f"images/{name}"

    # --- What stands elsewhere ---------------------------------------------------------------

    def copy_documents(self):
        """Links that lead out of docs/ lead nowhere from the pages: their words stay."""
        for source in (ROOT / "docs").iterdir():
            if source.suffix == ".md":
                text = re.sub(r"\[([^]]*)\]\(\.\./[^)]*\)", r"\1", source.read_text(encoding="utf-8"))
                self.write(source.name, with_charts(text))
            elif source.is_file():
                shutil.copy(source, self.folder)
        for source in (SITE / "pages").iterdir():
            self.write(source.name, with_charts(source.read_text(encoding="utf-8")))
        shutil.copy(ROOT / "CHANGELOG.md", self.folder / "changes.md")

    # --- Gallery -----------------------------------------------------------------------------

    def make_gallery(self):
        text = [
            "# Before and after\n\nEvery member that changes pixels, on one photograph. Each picture is made by the "
            "script below it when these pages are built. [Members](members.md) says what the arguments mean.\n"
        ]
        for section, members in SECTIONS.items():
            text.append(f"## {section}\n")
            text += [self.gallery_entry(member) for member in members.split()]
        self.write("gallery.md", "\n".join(text))

    def gallery_entry(self, member):
        script = SITE / "gallery" / f"{member}.rbs"
        lines = script.read_text(encoding="utf-8").splitlines()
        caption = lines[0].removeprefix("' ")
        self.run(script, self.photo, self.images / f"{member}.png")
        pair = picture_row(
            "pair",
            [("images/photo.png", "The photograph", "Before"), (f"images/{member}.png", f"After {member}", "After")],
        )
        code = "\n".join(lines[1:])
        return f"### {member}\n\n{caption}\n\n{pair}\n\n```vb\n{code}\n```\n"

    def strip(self, members):
        """Results side by side, each with its member's name."""
        return picture_row("strip", [(f"images/{m}.png", f"The photograph after {m}", m) for m in members])

    def make_start(self):
        page = self.folder / "index.md"
        strip = self.strip(
            "GammaFilter BoxBlurFilter SolarizeFilter DitherFilter OilFilter NeonFilter StampFilter " "Rotate".split()
        )
        page.write_text(page.read_text(encoding="utf-8").replace("<!-- strip -->", strip), encoding="utf-8")

    def make_kernels(self):
        kernels = {"ScaleFast, the nearest pixel": 0}
        kernels |= {
            name: value
            for name, value in sorted(self.constants.items(), key=lambda item: item[1])
            if re.fullmatch(r"Scale[A-Z]\w+", name)
        }
        figures = [
            (self.figure("kernels.rbs", f"kernel{value}.png", value), f"A dandelion eight times as large: {name}", name)
            for name, value in kernels.items()
        ]
        self.write(
            "kernels.md",
            "# Kernels\n\nThe same 56 × 32 pixels at eight times their size. `Scale` filters with one of seven "
            "kernels, `ScaleFast` takes the nearest pixel.\n\n"
            + picture_row("exact", figures)
            + "\n\n"
            + self.shown_script("kernels.rbs"),
        )

    def make_dithers(self):
        matrices = sorted((value, name) for name, value in self.constants.items() if name.startswith("Dither"))
        figures = [
            (self.figure("dither.rbs", f"dither{value}.png", value), f"The photograph in dots: {name}", name)
            for value, name in matrices
        ]
        self.write(
            "dither.md",
            "# Dither matrices\n\nThe photograph in black and white dots, by each of the ten matrices, pixel by pixel.\n\n"
            + picture_row("exact", figures)
            + "\n\n"
            + self.shown_script("dither.rbs"),
        )

    def shown_script(self, name):
        text = (SITE / "figures" / name).read_text(encoding="utf-8")
        return f"```vb\n{text}```\n"

    # --- Playground --------------------------------------------------------------------------

    def make_playground(self, built, photo):
        """`built` is what tools/playground.sh makes; without it the page says so."""
        page = self.folder / "playground.md"
        place = page.read_text(encoding="utf-8")
        scripts = playground_scripts()
        if (built / "tqx.wasm").exists():
            folder = self.folder / "playground"
            shutil.copytree(built, folder)
            self.run(SITE / "figures/photo.rbs", photo, folder / "photo.jpg", 960)
            (folder / "scripts.json").write_text(json.dumps(scripts), encoding="utf-8")
            shown = (
                '<div id="tqx-playground" class="playground">This page runs scripts by JavaScript.</div>\n'
                '<script src="playground/page.js"></script>'
            )
        else:
            shown = "!!! note\n    The playground was not built with these pages: `tools/site.sh playground` does it."
        page.write_text(place.replace("<!-- playground -->", shown), encoding="utf-8")

    # --- Formats -----------------------------------------------------------------------------

    def make_formats(self):
        names = {}
        for name, value in self.constants.items():
            if name.startswith("ImageFormat"):
                names.setdefault(value, []).append(name)
        rows = ["| Format | Bytes of a pixel | Also called |", "|---|---|---|"]
        for line in self.run(SITE / "figures/formats.rbs").splitlines():
            number, size, *offsets = map(int, line.split())
            first, *others = names[number]
            rows.append(f"| `{first}` | {drawn_bytes(size, offsets)} | {', '.join(f'`{o}`' for o in others)} |")
        self.write(
            "formats.md",
            "# Formats, byte by byte\n\nWhat the bytes of a pixel hold, as the pictures themselves tell: **R**ed, "
            "**G**reen, **B**lue, gra**Y**, **A**lpha; a dot is a byte that no channel uses. `ImageFormatScaling` "
            "is four floats, the intermediate of `Scale`.\n\n" + "\n".join(rows) + "\n",
        )

    # --- Framework ---------------------------------------------------------------------------

    def make_framework(self):
        listed = self.command("members")
        text = [
            "# Framework\n\nThe classes and functions that scripts have besides the plug-in's, each with an example "
            "that says behind a `'` what it prints. `tqx members NAME` tells the same.\n\n## Classes\n"
        ]
        classes = words_below(listed, "Classes")
        for name in classes:
            text += self.described_class(json.loads(self.command("members", "--json", name))["classes"][0])
        text.append("## Functions\n")
        for name in words_below(listed, "Functions"):
            if name in classes:
                continue
            functions = json.loads(self.command("members", "--json", name))["functions"]
            text.append(entry("###", name, functions[0], [f["declaration"] for f in functions]))
        self.write("framework.md", "\n".join(text))

    def described_class(self, described):
        name = described["name"]
        inherits = [f"Inherits {described['superclass']}"] if described["superclass"] else []
        text = [entry("###", name, described, inherits)]
        members = {}
        for kind in ("methods", "sharedMethods", "properties", "events", "constants"):
            for member in described[kind]:
                members.setdefault(member["name"], []).append((member, declared(name, kind, member)))
        for member, forms in sorted(members.items(), key=lambda item: item[0].lower()):
            title = f"New {name}" if member == "Constructor" else f"{name}.{member}"
            text.append(entry("####", title, forms[0][0], [form for _, form in forms]))
        return text


def declared(owner, kind, member):
    """A member as a script writes it."""
    if kind == "properties":
        return f"{member['name']} As {member['type']}" + ("" if member["write"] else " [read-only]")
    if kind == "constants":
        return f"{owner}.{member['name']} = {member['value']}"
    if kind == "events":
        return f"Event {member['declaration']}"
    if member["name"] == "Constructor":
        return f"New {owner}{member['declaration'][len('Constructor'):]}"
    assignable = " [assignable]" if member["assignable"] else ""
    return (f"{owner}." if kind == "sharedMethods" else "") + member["declaration"] + assignable


def entry(heading, title, described, declarations):
    """A title, its declarations, its sentence and its example."""
    forms = "".join(f"`{form}`  \n" for form in declarations)
    parts = [f"{heading} {title}", forms.rstrip(), described.get("description", "")]
    if described.get("example"):
        parts.append(f"```vb\n{described['example']}```")
    return "\n\n".join(part for part in parts if part) + "\n"


def playground_scripts():
    """What the playground's menu offers: all examples, each with the words that it is run with, and the gallery's."""
    words = json.loads((SITE / "playground/arguments.json").read_text(encoding="utf-8"))
    examples = {path.relative_to(ROOT / "examples").as_posix() for path in (ROOT / "examples").rglob("*.rbs")}
    # Plug-ins' own examples need their plug-in, which the page has not.
    forgotten = {name for name in examples if not name.startswith("plugin/")} ^ words.keys()
    if forgotten:
        raise SystemExit(f"site/playground/arguments.json and examples/ differ: {sorted(forgotten)}")
    offered = [
        ("Longer programs" if "/" in name else "Examples", ROOT / "examples" / name, words[name]) for name in words
    ]
    offered += [("Members", path, "photo.jpg result.png") for path in (SITE / "gallery").glob("*.rbs")]
    return [
        {
            "name": path.name,
            "group": group,
            "words": given,
            "title": path.read_text(encoding="utf-8").splitlines()[0].removeprefix("' "),
            "text": path.read_text(encoding="utf-8"),
        }
        for group, path, given in sorted(offered)
    ]


def with_charts(text):
    """Drawings with words in them, on lines of their own, keep a size that can be read."""
    return re.sub(
        r"^!\[([^]]*)\]\(([^)]*\.svg)\)$", r'<div class="chart"><img src="\2" alt="\1"></div>', text, flags=re.M
    )


def picture_row(style, pictures):
    figures = "\n".join(
        f'<figure><img src="{source}" alt="{html.escape(text)}" loading="lazy">'
        f"<figcaption>{html.escape(caption)}</figcaption></figure>"
        for source, text, caption in pictures
    )
    return f'<div class="{style}">\n{figures}\n</div>'


def drawn_bytes(size, offsets):
    """A box a byte, in the colour of what it holds."""
    if max(offsets) < 0:
        return f"{size} bytes"
    held = {offset: channel for channel, offset in zip(CHANNELS, offsets) if offset >= 0}
    letters = {"red": "R", "green": "G", "blue": "B", "gray": "Y", "alpha": "A", "other": "·"}
    boxes = [held.get(at, "other") for at in range(size)]
    return '<span class="bytes">' + "".join(f'<span class="{b}">{letters[b]}</span>' for b in boxes) + "</span>"


def words_below(text, heading):
    """The words of the table below a heading, which an empty line ends."""
    match = re.search(rf"^{heading}\n((?:.+\n)+)", text, re.MULTILINE)
    if not match:
        raise SystemExit(f"tqx members lists no {heading}")
    return [word for word in match.group(1).split() if re.fullmatch(r"\w+", word)]


def main():
    if len(sys.argv) != 4:
        raise SystemExit(__doc__)
    pages = Pages(sys.argv[1], Path(sys.argv[2]), Path(sys.argv[3]))
    pages.copy_documents()
    pages.make_gallery()
    pages.make_start()
    pages.make_kernels()
    pages.make_dithers()
    pages.make_formats()
    pages.make_playground(ROOT / "build/playground", sys.argv[2])
    pages.make_framework()


if __name__ == "__main__":
    main()
