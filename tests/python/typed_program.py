"""What mypy accepts, and (in the lines that say so) what it does not."""

import numpy as np

import tqx

P = tqx.PictureTQX


class Factory(tqx.PictureFactoryTQX):
    def NewPictureTQX(self, width: int, height: int, image_format: int, /) -> tqx.PictureTQX:
        return P(width, height, image_format)


picture: tqx.PictureTQX = P(3, 2, P.ImageFormatRGB)
picture.Factory = Factory()
picture.YieldTicks = 3
size: int = picture.Width * picture.PixelSize
bright = picture.GammaFilter(None, 2.2)
if bright is not None:
    wide: int = bright.Width
same: bool = picture.AutoLevel()
picture.Row[0] = picture.Row(1)
picture.RowInFormat[0, P.ImageFormatG] = b"abc"
picture.FillRectRGB(tqx.Color(1, 2, 3))
turned = picture.Rotate180(None)
picture.Rotate180()
host = tqx.framework.Picture(3, 2, 32)
P(host, True)
array = np.asarray(picture)
P.from_array(array).rows()
tqx.imwrite("a.png", tqx.imread("b.png"))
try:
    pass
except tqx.OutOfBoundsException as error:
    number: int = error.ErrorNumber

picture.GammaFilter(None, "2.2")  # error: call-overload
picture.width  # error: attr-defined
picture.Width = 3  # error: misc
picture.GammaFilter(None, 2.2).Width  # error: union-attr
P("a", 2, 3)  # error: call-overload
picture.Row[0] = 3  # error: assignment
