// Contributions and counts of luminance as arrays.
#include "python/native/Pieces.h"

#include <pybind11/numpy.h>

#include <algorithm>
#include <vector>

#include "plugin/geometry/Contributions.h"
#include "plugin/rows/Luminance.h"

namespace pytqx {

namespace {

namespace py = pybind11;

using Doubles = py::array_t<double, py::array::c_style>;
using Indices = py::array_t<std::int32_t, py::array::c_style>;
using Bytes = py::array_t<std::uint8_t, py::array::c_style>;

// Lists `begin` to `end` - 1 of one direction of a filtered scaling as arrays: the first source index of each,
// its weights (padded with zeros to the longest), and their totals.
py::tuple ContributionsOf(std::int32_t mode, bool across, std::int32_t from, std::int32_t to, std::int32_t begin,
                          std::int32_t end) {
    const tqx::ScaleKernel* const kernel = tqx::KernelOfMode(mode);
    if (!kernel || from < 1 || begin < 0 || begin >= end || end > to) throw py::value_error("no such lists");
    tqx::Contributions lists;
    if (!lists.Start(*kernel, {across ? tqx::Axis::Across : tqx::Axis::Down, from, to, end})) throw std::bad_alloc();
    for (std::int32_t i = begin; i < end; ++i) lists.BuildList(i);
    Indices first(end - begin);
    Doubles totals(end - begin);
    Doubles weights({end - begin, std::max(lists.MostTaps(), 1)});
    std::fill_n(weights.mutable_data(), weights.size(), 0.0);
    for (std::int32_t i = begin; i < end; ++i) {
        const rows::Taps& list = lists[i];
        first.mutable_at(i - begin) = list.first;
        totals.mutable_at(i - begin) = list.total;
        std::copy_n(list.weights, list.count, weights.mutable_data(i - begin, 0));
    }
    return py::make_tuple(first, weights, totals);
}

// Counts pixels of an array (height, width, bytes a pixel) by luminance.
py::array_t<std::int64_t> CountLuminance(const Bytes& pixels, std::int32_t red, std::int32_t green, std::int32_t blue) {
    if (pixels.ndim() != 3 || std::min({red, green, blue}) < 0 || std::max({red, green, blue}) >= pixels.shape(2))
        throw py::value_error("colours of (height, width, channels) are counted");
    const rows::PixelLayout layout{static_cast<std::int32_t>(pixels.shape(2)), {red, green, blue, 0}};
    rows::CountLuminanceFunction* const count = rows::kCountLuminance.Chosen();
    rows::Histogram histogram{};
    const auto width = static_cast<std::int32_t>(pixels.shape(1));
    if (width > 0)
        for (py::ssize_t y = 0; y < pixels.shape(0); ++y) count(layout, pixels.data(y, 0, 0), width, &histogram);
    py::array_t<std::int64_t> counts(256);
    std::copy_n(histogram.count, 256, counts.mutable_data());
    return counts;
}

}  // namespace

void AddPieces(py::module_& module) {
    module.def("contributions", &ContributionsOf, py::arg("mode"), py::arg("across"), py::arg("count"),
               py::arg("result"), py::arg("begin"), py::arg("end"));
    module.def("count_luminance", &CountLuminance, py::arg("pixels"), py::arg("red"), py::arg("green"),
               py::arg("blue"));
}

}  // namespace pytqx
