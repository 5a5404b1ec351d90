// Readers and writers as Python objects over rows in any buffer.
#include "python/native/Images.h"

#include <pybind11/stl.h>

#include <memory>
#include <optional>
#include <string>

#include "host/images/ImageReader.h"
#include "host/images/ImageWriter.h"
#include "python/native/Gate.h"

namespace pytqx {

namespace {

namespace py = pybind11;

using host::ImageReader;
using host::ImageWriter;

std::unique_ptr<ImageReader> OpenImage(const std::string& path, std::optional<std::int64_t> pixelLimit, bool upright) {
    const Inside inside;
    const Unlocked unlocked;
    return std::make_unique<ImageReader>(path, host::ImageReadSettings{pixelLimit, upright});
}

// The rows of a packed array, which must be of whole rows.
std::int64_t RowCount(const py::buffer_info& rows, std::int64_t rowBytes) {
    Py_ssize_t expected = rows.itemsize;
    for (py::ssize_t d = rows.ndim - 1; d >= 0; expected *= rows.shape[d], --d)
        if (rows.shape[d] > 1 && rows.strides[d] != expected) throw py::value_error("the array has gaps");
    const std::int64_t bytes = rows.size * rows.itemsize;
    if (rows.itemsize != 1 || bytes % rowBytes != 0) throw py::value_error("the array is not of rows of this image");
    return bytes / rowBytes;
}

void ReadInto(ImageReader& reader, const py::buffer& array) {
    const py::buffer_info rows = array.request(true);
    const std::int64_t rowBytes = std::int64_t{reader.Info().width} * BytesPerPixel(reader.Info().layout);
    const std::int64_t count = RowCount(rows, rowBytes);
    const Inside inside;
    const Unlocked unlocked;
    for (std::int64_t y = 0; y < count; ++y) reader.ReadRow(static_cast<std::uint8_t*>(rows.ptr) + y * rowBytes);
}

py::tuple ShapeOfImage(const ImageReader& reader) {
    const host::ImageInfo& info = reader.Info();
    const int channels = BytesPerPixel(info.layout);
    return channels == 1 ? py::make_tuple(info.height, info.width) : py::make_tuple(info.height, info.width, channels);
}

// A writer and what its rows are.
struct Writer {
    Writer(const std::string& path, std::int32_t width, std::int32_t height, int channels,
           std::optional<std::int32_t> quality)
        : rowBytes(std::int64_t{width} * channels),
          writer(path, width, height, static_cast<host::PixelLayout>(channels), {{}, quality}) {}

    std::int64_t rowBytes;
    ImageWriter writer;
};

std::unique_ptr<Writer> StartImage(const std::string& path, std::int32_t width, std::int32_t height, int channels,
                                   std::optional<std::int32_t> quality) {
    if (channels < 1 || channels > 4) throw py::value_error("an image has 1 to 4 channels");
    const Inside inside;
    const Unlocked unlocked;
    return std::make_unique<Writer>(path, width, height, channels, quality);
}

void WriteFrom(Writer& writer, const py::buffer& array) {
    const py::buffer_info rows = array.request();
    const std::int64_t count = RowCount(rows, writer.rowBytes);
    const Inside inside;
    const Unlocked unlocked;
    for (std::int64_t y = 0; y < count; ++y)
        writer.writer.WriteRow(static_cast<const std::uint8_t*>(rows.ptr) + y * writer.rowBytes);
}

void Finish(Writer& writer) {
    const Inside inside;
    const Unlocked unlocked;
    writer.writer.Finish();
}

}  // namespace

void AddImages(py::module_& module) {
    py::class_<ImageReader>(module, "ImageReader", "An image file, read row by row.")
        .def(py::init(&OpenImage), py::arg("path"), py::arg("pixel_limit") = py::none(), py::arg("upright") = true)
        .def_property_readonly("shape", &ShapeOfImage, "(height, width) or (height, width, channels)")
        .def("read_into", &ReadInto, py::arg("rows"), "Fills a packed array of whole rows with the next ones.");
    py::class_<Writer>(module, "ImageWriter", "An image file, written row by row; a file without finish() is none.")
        .def(py::init(&StartImage), py::arg("path"), py::arg("width"), py::arg("height"), py::arg("channels"),
             py::arg("quality") = py::none())
        .def("write_from", &WriteFrom, py::arg("rows"), "Writes the rows of a packed array.")
        .def("finish", &Finish, "Completes the file and gives it its name.");
}

}  // namespace pytqx
