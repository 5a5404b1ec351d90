"""GraphicsMagick through its C interface, ImageMagick through Wand. Both keep 16 bits a channel."""
import ctypes
import os

import numpy as np
from wand.image import Image
from wand.version import MAGICK_VERSION

CHAR_PIXEL = 0
EXCEPTION_ROOM = 4096  # more than the library's record takes


def graphics_magick():
    library = ctypes.CDLL("libGraphicsMagick-Q16.so.3", mode=os.RTLD_LOCAL | os.RTLD_DEEPBIND)  # ImageMagick has the same names
    library.GetMagickVersion.restype = ctypes.c_char_p
    library.ConstituteImage.restype = ctypes.c_void_p
    library.ConstituteImage.argtypes = [ctypes.c_ulong, ctypes.c_ulong, ctypes.c_char_p, ctypes.c_int, ctypes.c_void_p,
                                        ctypes.c_void_p]
    library.SpreadImage.restype = ctypes.c_void_p
    library.SpreadImage.argtypes = [ctypes.c_void_p, ctypes.c_uint, ctypes.c_void_p]
    library.DestroyImage.argtypes = [ctypes.c_void_p]
    library.InitializeMagick(None)
    return library


library = graphics_magick()
GRAPHICS_MAGICK_VERSION = " ".join(library.GetMagickVersion(None).decode().split()[:2])
IMAGE_MAGICK_VERSION = " ".join(MAGICK_VERSION.split()[:2])


def spread(radius):
    def make(pictures, format):
        exception = ctypes.create_string_buffer(EXCEPTION_ROOM)
        library.GetExceptionInfo(exception)
        array = np.ascontiguousarray(pictures[format])
        image = library.ConstituteImage(array.shape[1], array.shape[0], b"RGB", CHAR_PIXEL, array.ctypes.data,
                                        exception)
        if not image:
            raise RuntimeError("GraphicsMagick takes no image")

        def call():
            result = library.SpreadImage(image, radius, exception)
            library.DestroyImage(result)
        return call
    return make


def oil(radius):
    def make(pictures, format):
        image = Image.from_array(np.ascontiguousarray(pictures[format][:750, :1000]))

        def call():
            with image.clone() as painted:
                painted.oil_paint(radius)
        return call
    return make
