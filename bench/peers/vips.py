"""libvips, on pictures in memory. Calls give new images, which are computed when written to memory."""
import gi

gi.require_version("Vips", "8.0")
from gi.repository import GObject, Vips  # noqa: E402

Vips.init("bench")
Vips.concurrency_set(1)
Vips.cache_set_max(0)
VERSION = Vips.version_string()


def image_of(array):
    channels = array.shape[2] if array.ndim == 3 else 1
    return Vips.Image.new_from_memory_copy(array.tobytes(), array.shape[1], array.shape[0], channels,
                                           Vips.BandFormat.UCHAR)


def operation(name, image, **arguments):
    """The output image of a named operation."""
    call = Vips.Operation.new(name)
    for key, value in [("in", image), *arguments.items()]:
        GObject.Object.set_property(call, key, value)
    return GObject.Object.get_property(Vips.cache_operation_build(call), "out")


def timed(make):
    """A call that builds the operation and computes it into memory: make(image)."""
    def made(pictures, format):
        image = image_of(pictures[format])
        return lambda: make(image).write_to_memory()
    return made


def lookup(table):
    entries = image_of(table.reshape(1, 256))
    return timed(lambda image: operation("maplut", image, lut=entries))


def turn():
    return timed(lambda image: operation("rot", image, angle=Vips.Angle.D90))
