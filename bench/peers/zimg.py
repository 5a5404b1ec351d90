"""zimg's planar scaler, through its C interface."""
import ctypes

import numpy

API_VERSION = 2 << 8 | 4
BILINEAR, BICUBIC, LANCZOS = 1, 2, 5
CPU_AUTO, CPU_AUTO_64B, CPU_AVX2 = 1, 2, 1009
BYTES, FULL_RANGE = 0, 1


class ImageFormat(ctypes.Structure):
    _fields_ = [(name, ctypes.c_uint) for name in
                ("version", "width", "height", "pixel_type", "subsample_w", "subsample_h", "color_family",
                 "matrix", "transfer", "primaries", "depth", "pixel_range", "field_parity", "chroma_location")]
    _fields_ += [("active_region", ctypes.c_double * 4), ("alpha", ctypes.c_uint)]


class Parameters(ctypes.Structure):
    _fields_ = [("version", ctypes.c_uint), ("filter", ctypes.c_uint), ("a", ctypes.c_double),
                ("b", ctypes.c_double), ("filter_uv", ctypes.c_uint), ("a_uv", ctypes.c_double),
                ("b_uv", ctypes.c_double), ("dither", ctypes.c_uint), ("cpu", ctypes.c_uint),
                ("luminance", ctypes.c_double), ("approximate_gamma", ctypes.c_char)]


class Plane(ctypes.Structure):
    _fields_ = [("data", ctypes.c_void_p), ("stride", ctypes.c_ssize_t), ("mask", ctypes.c_uint)]


class Buffer(ctypes.Structure):
    _fields_ = [("version", ctypes.c_uint), ("plane", Plane * 4)]


def load():
    library = ctypes.CDLL("libzimg.so.2")
    library.zimg_filter_graph_build.restype = ctypes.c_void_p
    library.zimg_filter_graph_process.argtypes = [ctypes.c_void_p, ctypes.POINTER(Buffer), ctypes.POINTER(Buffer),
                                                  ctypes.c_void_p] + [ctypes.c_void_p] * 4
    library.zimg_filter_graph_get_tmp_size.argtypes = [ctypes.c_void_p, ctypes.POINTER(ctypes.c_size_t)]
    return library


def format_of(library, plane):
    image = ImageFormat()
    library.zimg_image_format_default(ctypes.byref(image), API_VERSION)
    image.height, image.width = plane.shape
    image.pixel_type, image.pixel_range = BYTES, FULL_RANGE
    return image


def buffer_of(plane):
    buffer = Buffer(version=API_VERSION)
    buffer.plane[0] = Plane(plane.ctypes.data, plane.strides[0], 0xFFFFFFFF)
    return buffer


class Scaler:
    """Scales planes of one size to another: filter, its parameters, and the level of instructions."""

    def __init__(self, source, destination, filter, a, b, level):
        self.library = load()
        parameters = Parameters()
        self.library.zimg_graph_builder_params_default(ctypes.byref(parameters), API_VERSION)
        parameters.filter, parameters.a, parameters.b = filter, a, b
        parameters.cpu = CPU_AVX2 if level == "avx2" else CPU_AUTO_64B
        self.graph = self.library.zimg_filter_graph_build(
            ctypes.byref(format_of(self.library, source)), ctypes.byref(format_of(self.library, destination)),
            ctypes.byref(parameters))
        if not self.graph:
            raise RuntimeError("zimg can't build a graph")
        size = ctypes.c_size_t()
        self.library.zimg_filter_graph_get_tmp_size(self.graph, ctypes.byref(size))
        self.memory = aligned(size.value)

    def run(self, source, destination):
        if self.library.zimg_filter_graph_process(self.graph, buffer_of(source), buffer_of(destination),
                                                  self.memory.ctypes.data, None, None, None, None):
            raise RuntimeError("zimg can't scale")


def aligned(size):
    """Bytes that begin at a multiple of 64."""
    block = numpy.zeros(size + 64, numpy.uint8)
    start = -block.ctypes.data % 64
    return block[start:start + size]


def plane(height, width):
    """A plane whose rows begin at multiples of 64."""
    stride = (width + 63) // 64 * 64
    return aligned(stride * height).reshape(height, stride)[:, :width]
