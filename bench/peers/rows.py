"""What is measured beside what: our benchmarks, and the calls of other libraries nearest to them.

A Row has our benchmark's name and one peer or more. Peers are given as functions that make the call:
they allocate what it needs, so that only the call itself is timed, into a destination that is
there already wherever the library can take one.
"""
import dataclasses
import os
from typing import Callable

import cv2
import numpy as np

import magick
import vips
import zimg
from PIL import Image, ImageFilter, ImageOps

WIDTH, HEIGHT = 4000, 3000
LEVEL = os.environ["TQX_CPU_LEVEL"]
CHANNELS = {"RGB": 3, "RGBA": 4, "gray": 1}
CODES = {"RGB": 1, "RGBA": 2, "gray": 11}


@dataclasses.dataclass
class Peer:
    library: str
    call: str  # what is called, for the page
    make: Callable  # (pictures, format) -> function to time, or Parts


@dataclasses.dataclass
class Row:
    name: str
    format: str
    bench: str  # our benchmark, without BM_
    peers: list
    pixels: float  # of the larger of source and destination
    bytes: float  # read once and written once
    picture: float  # bytes of the memcpy to compare with
    differs: str = ""


rows = []


def row(name, format, bench, peers, differs="", bytes_each=2.0, size=(WIDTH, HEIGHT), other=None):
    """Of one size, with so many bytes each channel byte; or from and to sizes."""
    channels, pixels = CHANNELS[format], size[0] * size[1]
    total = channels * pixels * bytes_each
    if other:
        total = channels * (pixels + other[0] * other[1])
        pixels = max(pixels, other[0] * other[1])
    rows.append(Row(name, format, bench, peers, pixels, total, channels * pixels, differs))


def opencv(call, make):
    return Peer("OpenCV", call, make)


def into(function):
    """A call of OpenCV's from the picture into a destination of its shape: function(source, dest)."""
    def make(pictures, format):
        source, dest = pictures[format], np.empty_like(pictures[format])
        return lambda: function(source, dest)
    return make


def in_place(function):
    def make(pictures, format):
        own = pictures[format].copy()
        return lambda: function(own, own)
    return make


def pillow(call, function):
    """A function of Pillow's that gives a new image: function(image)."""
    return Peer("Pillow", call, lambda pictures, format: (lambda image: lambda: function(image))(
        Image.fromarray(pictures[format])))


def table(gamma):
    return (255 * (np.arange(256) / 255) ** (1 / gamma)).astype(np.uint8)


each_table = np.stack([table(2.2), table(1.8), table(1.4)], axis=-1).reshape(1, 256, 3)
kernel = np.array([[0, 0, -1, 0, 0], [0, -1, -2, -1, 0], [-1, -2, 17, -2, -1], [0, -1, -2, -1, 0],
                   [0, 0, -1, 0, 0]], np.float32)

# --- Tone curves ------------------------------------------------------------------------------

for format, bench in (("RGB", "Gamma_RGB"), ("RGBA", "Gamma_RGBA_AlphaStays"), ("gray", "Gamma_Gray")):
    row("lookup table (gamma)", format, bench, [
        opencv("LUT", into(lambda s, d: cv2.LUT(s, table(2.2), d))),
        Peer("libvips", "maplut", vips.lookup(table(2.2))),
    ], "OpenCV maps alpha too" if format == "RGBA" else "")
row("lookup table per channel", "RGB", "GammaEach_RGB", [opencv("LUT", into(lambda s, d: cv2.LUT(s, each_table, d)))])
for format in ("RGB", "gray"):
    row("solarize", format, f"Solarize_{format.capitalize() if format == 'gray' else format}",
        [pillow("ImageOps.solarize", ImageOps.solarize)], "a new image")

# --- Neighbourhoods ---------------------------------------------------------------------------

for format, suffix in (("RGB", "RGB"), ("RGBA", "RGBA"), ("gray", "Gray")):
    row("5x5 integer kernel + delta", format, f"Convolve_{suffix}",
        [opencv("filter2D", into(lambda s, d: cv2.filter2D(s, -1, kernel, d, delta=3)))], "rounds")
    for radius in (3, 20):
        row(f"box blur radius {radius}", format, f"BoxBlur{radius}_{suffix}", [
            opencv("blur", into(lambda s, d, k=2 * radius + 1: cv2.blur(s, (k, k), d)))],
            "OpenCV mirrors at edges and rounds")
row("box blur radius 100", "RGB", "BoxBlur100_RGB", [opencv("blur", into(lambda s, d: cv2.blur(s, (201, 201), d)))],
    "OpenCV mirrors at edges and rounds")


def thrice(source, dest):
    cv2.blur(source, (7, 7), dest)
    cv2.blur(dest, (7, 7), dest)
    cv2.blur(dest, (7, 7), dest)


row("box blur radius 3, three times", "RGB", "BoxBlur3ThreeTimes_RGB", [
    opencv("blur, three times", into(thrice)),
    opencv("GaussianBlur, sigma 3.46", into(lambda s, d: cv2.GaussianBlur(s, (0, 0), 3.46, d)))],
    "OpenCV mirrors at edges and rounds")
for format, suffix in (("RGB", "RGB"), ("gray", "Gray")):
    row("3-tap separable blur", format, f"FractionalBlur_{suffix}",
        [opencv("GaussianBlur, 3x3", into(lambda s, d: cv2.GaussianBlur(s, (3, 3), 0, d)))], "weights 1 2 1")
    row("ordered dither 8x8 to 2 levels", format, f"Dither2Levels_{suffix}", [
        opencv("compare with a tiled matrix", lambda pictures, format: (
            lambda s, m, d: lambda: cv2.compare(s, m, cv2.CMP_GT, d))(
                pictures[format], np.random.default_rng(1).integers(0, 255, pictures[format].shape, np.uint8),
                np.empty_like(pictures[format])))], "the matrix is a picture of its own")
    row("engrave", format, f"Engrave_{suffix}", [
        opencv("addWeighted on shifted views", lambda pictures, format: (
            lambda s, d: lambda: cv2.addWeighted(s[:-1, :-1], 1, s[1:, 1:], -1, 128, d[:-1, :-1]))(
                pictures[format], np.empty_like(pictures[format])))])


def gradient(source, dest):
    across = cv2.subtract(source[:-1, 1:], source[:-1, :-1], dtype=cv2.CV_32F)
    down = cv2.subtract(source[1:, :-1], source[:-1, :-1], dtype=cv2.CV_32F)
    cv2.convertScaleAbs(cv2.magnitude(across, down), dest)


for format, suffix in (("RGB", "RGB"), ("gray", "Gray")):
    row("neon", format, f"Neon_{suffix}", [
        opencv("subtract, magnitude in float", lambda pictures, format: (lambda s, d: lambda: gradient(s, d))(
            pictures[format], np.empty_like(pictures[format][:-1, :-1])))])
row("unsharp step against a reference", "RGB", "Unsharp_RGB", [
    opencv("addWeighted", lambda pictures, format: (lambda s, r: lambda: cv2.addWeighted(s, 1.3, r, -0.3, 0, s))(
        pictures[format].copy(), cv2.blur(pictures[format], (7, 7))))], "OpenCV has no threshold", bytes_each=3.0)
row("diffuse level 5", "RGB", "Diffuse5_RGB", [Peer("GraphicsMagick", "SpreadImage", magick.spread(5))],
    "GraphicsMagick has its own random generator; a new image of 16-bit channels")
row("oil paint range 3", "RGB", "Oil/range:3", [
    opencv("xphoto.oilPainting", lambda pictures, format: (lambda s: lambda: cv2.xphoto.oilPainting(s, 3, 1))(
        np.ascontiguousarray(pictures[format][:750, :1000]))),
    Peer("ImageMagick", "OilPaintImage", magick.oil(3))],
    "OpenCV takes bins of intensity for all channels; both give new images", size=(1000, 750))

# --- Levels -----------------------------------------------------------------------------------


def auto_levels(source, dest):
    luminance = cv2.transform(source, np.array([[0.3, 0.59, 0.11]], np.float32))
    counts = np.cumsum(cv2.calcHist([luminance], [0], None, [256], [0, 256]))
    low, high = np.searchsorted(counts, [0.005 * counts[-1], 0.995 * counts[-1]])
    ramp = np.clip((np.arange(256) - low) * 255.0 / max(high - low, 1), 0, 255).astype(np.uint8)
    cv2.LUT(source, ramp, dest)


row("automatic levels", "RGB", "AutoLevel_RGB", [
    opencv("transform, calcHist, LUT", into(auto_levels)),
    pillow("ImageOps.autocontrast, 0.5 %", lambda image: ImageOps.autocontrast(image, cutoff=0.5))],
    "Pillow's has a histogram a channel")

# --- Mirrors and turns ------------------------------------------------------------------------

for format in CHANNELS:
    code = CODES[format]
    row("horizontal mirror, in place", format, f"HMirror/format:{code}",
        [opencv("flip 1", in_place(lambda s, d: cv2.flip(s, 1, d)))])
    row("vertical mirror, in place", format, f"VMirror/format:{code}",
        [opencv("flip 0", in_place(lambda s, d: cv2.flip(s, 0, d)))])
    row("rotate 180", format, f"Rotate180/format:{code}",
        [opencv("rotate", into(lambda s, d: cv2.rotate(s, cv2.ROTATE_180, d))),
         pillow("transpose", lambda image: image.transpose(Image.Transpose.ROTATE_180))])
    for degrees, name in ((90, "ROTATE_90_CLOCKWISE"), (270, "ROTATE_90_COUNTERCLOCKWISE")):
        row(f"rotate {degrees}", format, f"Rotate{degrees}/format:{code}", [
            opencv("rotate", lambda pictures, format, name=name: (
                lambda s, d: lambda: cv2.rotate(s, getattr(cv2, name), d))(
                    pictures[format], np.empty_like(np.rot90(pictures[format]), order="C"))),
            pillow("transpose", lambda image: image.transpose(Image.Transpose.ROTATE_90)),
            Peer("libvips", "rot", vips.turn())])


def turn_ten(source, dest):
    matrix = cv2.getRotationMatrix2D((2000, 1500), 10, 1)
    matrix[:, 2] += (230, 325)
    cv2.warpAffine(source, matrix, (4461, 3650), dest, cv2.INTER_LINEAR)


for format in CHANNELS:
    row("rotate 10 degrees", format, f"Rotate10Degrees/format:{CODES[format]}", [
        opencv("warpAffine, bilinear", lambda pictures, format: (lambda s, d: lambda: turn_ten(s, d))(
            pictures[format], np.empty((3650, 4461) + pictures[format].shape[2:], np.uint8)))],
        "ours is three shears, each into a new picture", other=(4461, 3650))

# --- Nearest ----------------------------------------------------------------------------------


def resized(interpolation, size):
    def make(pictures, format):
        source = pictures[format]
        dest = np.empty((size[1], size[0]) + source.shape[2:], np.uint8)
        return lambda: cv2.resize(source, size, dest, interpolation=interpolation)
    return make


def resized_from(interpolation, from_size, size):
    def make(pictures, format):
        source = np.ascontiguousarray(pictures[format][:from_size[1], :from_size[0]])
        return resized(interpolation, size)({format: source}, format)
    return make


def pillow_resized(name, resample, from_size, size):
    def make(pictures, format):
        image = Image.fromarray(np.ascontiguousarray(pictures[format][:from_size[1], :from_size[0]]))
        return lambda: image.resize(size, resample)
    return Peer("Pillow", f"resize {name}", make)


for format in CHANNELS:
    for name, bench, small in (("nearest to half size", "ScaleFastToHalf", "to"),
                               ("nearest to double size", "ScaleFastToDouble", "from")):
        sizes = [(WIDTH, HEIGHT), (WIDTH // 2, HEIGHT // 2)]
        source, dest = sizes if small == "to" else sizes[::-1]
        row(name, format, f"{bench}/format:{CODES[format]}", [
            opencv("resize INTER_NEAREST", resized_from(cv2.INTER_NEAREST, source, dest)),
            pillow_resized("NEAREST", Image.Resampling.NEAREST, source, dest)], size=source, other=dest)

# --- Filtered scaling -------------------------------------------------------------------------

NAN = float("nan")
KERNELS = {
    # ours: (zimg's, OpenCV's, Pillow's)
    "triangle": ((zimg.BILINEAR, NAN, NAN), cv2.INTER_LINEAR, Image.Resampling.BILINEAR),
    "box": (None, cv2.INTER_AREA, Image.Resampling.BOX),
    "Lanczos3": ((zimg.LANCZOS, 3, NAN), None, Image.Resampling.LANCZOS),
    "Lanczos8": ((zimg.LANCZOS, 8, NAN), None, None),
    "Mitchell": ((zimg.BICUBIC, 1 / 3, 1 / 3), None, None),
    "Poly3": ((zimg.BICUBIC, 0, 0.75), None, Image.Resampling.BICUBIC),
    "Cubic": ((zimg.BICUBIC, 0, 0.5), None, None),
}


class Parts:
    """Calls whose times add up."""

    def __init__(self, *calls):
        self.calls = calls


def planar(parameters, from_size, size):
    """zimg on each plane, and what splitting and merging cost for interleaved channels."""
    def make(pictures, format):
        channels = CHANNELS[format]
        source = np.ascontiguousarray(pictures[format][:from_size[1], :from_size[0]])
        plane, scaled = zimg.plane(*source.shape[:2]), zimg.plane(size[1], size[0])
        plane[:] = source if channels == 1 else source[:, :, 0]
        scaler = zimg.Scaler(plane, scaled, *parameters, LEVEL)
        scale = lambda: scaler.run(plane, scaled)
        if channels == 1:
            return Parts(scale)
        planes = cv2.split(source)
        results = [np.empty((size[1], size[0]), np.uint8) for _ in range(channels)]
        merged = np.empty((size[1], size[0], channels), np.uint8)
        return Parts(*[scale] * channels, lambda: cv2.split(source, planes), lambda: cv2.merge(results, merged))
    return Peer("zimg", "split, planes, merge", make)


for source, dest in (((4000, 3000), (1000, 750)), ((4000, 3000), (3000, 2250)), ((1000, 750), (4000, 3000))):
    for format in CHANNELS:
        for name, (of_zimg, of_opencv, of_pillow) in KERNELS.items():
            peers = [planar(of_zimg, source, dest)] if of_zimg else []
            # OpenCV's bilinear looks at two samples however much it shrinks: another operation.
            if of_opencv is not None and (name == "box" or dest[0] > source[0]):
                peers.append(opencv("resize", resized_from(of_opencv, source, dest)))
            if of_pillow is not None:
                peers.append(pillow_resized(of_pillow.name, of_pillow, source, dest))
            row(f"{source[0]} to {dest[0]}, {name}", format, f"Scale/{source[0]}_to_{dest[0]}/{format}/{name}", peers,
                "six points against four" if name == "Cubic" else "", size=source, other=dest)

# --- Copies, conversions, fills ---------------------------------------------------------------


def conversion(name, format, bench, peers, to_size, differs=""):
    size = CHANNELS[format]
    rows.append(Row(name, format, bench, peers, 12e6, 12e6 * (size + to_size), 12e6 * max(size, to_size), differs))


def converted(code, channels):
    def make(pictures, format):
        dest = np.empty((HEIGHT, WIDTH, channels) if channels > 1 else (HEIGHT, WIDTH), np.uint8)
        return lambda: cv2.cvtColor(pictures[format], code, dest)
    return make


def to_alpha_first(pictures, format):
    dest = np.empty_like(pictures[format])
    return lambda: cv2.mixChannels([pictures[format]], [dest], [0, 1, 1, 2, 2, 3, 3, 0])


def channel(pictures, format):
    dest = np.empty((HEIGHT, WIDTH), np.uint8)
    return lambda: cv2.extractChannel(pictures[format], 1, dest)


conversion("RGB to BGRA", "RGB", "CopyPixels/from:1/to:7", [opencv("cvtColor", converted(cv2.COLOR_RGB2BGRA, 4))], 4,
           "ours leaves alpha as it is")
conversion("RGB to BGR", "RGB", "CopyPixels/from:1/to:6", [opencv("cvtColor", converted(cv2.COLOR_RGB2BGR, 3))], 3)
conversion("RGB to gray", "RGB", "CopyPixels/from:1/to:11", [opencv("cvtColor", converted(cv2.COLOR_RGB2GRAY, 1))], 1)
conversion("RGBA to gray", "RGBA", "CopyPixels/from:2/to:11", [opencv("cvtColor", converted(cv2.COLOR_RGBA2GRAY, 1))],
           1)
conversion("RGBA to ARGB", "RGBA", "CopyPixels/from:2/to:4", [opencv("mixChannels", to_alpha_first)], 4)
conversion("one channel", "RGB", "ExtractChannel", [
    opencv("extractChannel", channel), pillow("getchannel", lambda image: image.getchannel(1))], 1)


def filled(value):
    def make(pictures, format):
        own = pictures[format].copy()
        return lambda: cv2.rectangle(own, (0, 0), (WIDTH - 1, HEIGHT - 1), value, cv2.FILLED)
    return make


for format in CHANNELS:
    code = CODES[format]
    if format != "gray":
        row("fill with a colour", format, f"FillRectRGB/format:{code}",
            [opencv("rectangle, filled", filled((10, 200, 30, 255)))], bytes_each=1.0)
    row("clear", format, f"ClearRect/format:{code}", [
        Peer("numpy", "fill", in_place(lambda s, d: s.fill(0)))], bytes_each=1.0)
    row("invert, in place", format, f"Invert/format:{code}", [
        opencv("bitwise_not", in_place(lambda s, d: cv2.bitwise_not(s, d))),
        Peer("numpy", "invert", in_place(lambda s, d: np.invert(s, out=d)))],
        "ours keeps alpha" if format == "RGBA" else "")
    row("copy", format, f"CopyPixels/from:{code}/to:{code}", [
        opencv("copyTo", into(lambda s, d: cv2.copyTo(s, None, d)))])
