"""A factory in Python: results larger than a limit go to mapped files instead of memory.

python3 factory.py PHOTO RESULT
"""

import itertools
import pathlib
import sys
import tempfile

import tqx

P = tqx.PictureTQX


class Frugal(tqx.PictureFactoryTQX):
    """Makes pictures of more than a million pixels in scratch files, which go with them."""

    def __init__(self, folder: str) -> None:
        self.names = (pathlib.Path(folder) / f"{number}.scratch" for number in itertools.count())
        self.mapped = 0

    def NewPictureTQX(self, width: int, height: int, image_format: int, /) -> tqx.PictureTQX:
        if width * height < 1_000_000:
            return P(width, height, image_format)
        self.mapped += 1
        return P(width, height, image_format, 1 << 24, next(self.names))


with tempfile.TemporaryDirectory() as folder:
    photo = P.from_array(tqx.imread(sys.argv[1]))
    photo.Factory = factory = Frugal(folder)
    blurred = photo.BoxBlurFilter(None, 4)
    if blurred is None:
        sys.exit(tqx.explain())
    tqx.imwrite(sys.argv[2], blurred)
    print(f"{blurred.Width} x {blurred.Height}, {factory.mapped} in files")
    blurred.Close()
