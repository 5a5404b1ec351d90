// Pixels and bytes through Python's buffer protocol.
#include "python/native/Buffers.h"

#include <cstring>
#include <memory>
#include <unordered_map>
#include <vector>

#include "host/calls/Runtime.h"
#include "host/framework/MemoryBlock.h"
#include "python/native/Errors.h"
#include "python/native/Gate.h"
#include "python/native/Pixels.h"
#include "python/native/Wrapper.h"

namespace pytqx {

namespace {

using host::Object;
using host::Ref;

// What belongs to one view: its shape, and the objects whose bytes must stay meanwhile.
struct Shown {
    std::uint8_t* address = nullptr;
    Py_ssize_t itemSize = 1;
    Py_ssize_t shape[3] = {}, strides[3] = {};
    int dimensions = 1;
    std::vector<Ref<Object>> held;
};

char formatOfBytes[] = "B", formatOfFloats[] = "f";

// --- What there is to show --------------------------------------------------------------------------

// The picture, and those whose storage it shares.
std::vector<Ref<Object>> WithParents(Object* picture) {
    std::vector<Ref<Object>> chain;
    for (auto at = Ref<Object>::Share(picture); at; at = ParentOf(at.get())) chain.push_back(at);
    return chain;
}

// The bytes that a shown picture covers, from its lowest address.
std::pair<const std::uint8_t*, std::int64_t> Extent(const Shown& shown) {
    std::int64_t low = 0, high = shown.itemSize;
    for (int d = 0; d < shown.dimensions; ++d) {
        if (shown.shape[d] == 0) return {shown.address, 0};
        const std::int64_t reach = (shown.shape[d] - 1) * shown.strides[d];
        (reach < 0 ? low : high) += reach;
    }
    return {shown.address + low, high - low};
}

// A memory block that a script described wrongly must not show what lies beyond it.
void RefuseOutside(const Shown& shown) {
    const Ref<Object> block = BlockOf(shown.held.back().get());
    const auto bytes = host::BytesOfMemoryBlock(block.get());
    const auto [low, length] = Extent(shown);
    if (bytes.empty() || length == 0) return;
    if (low < bytes.data() || low + length > bytes.data() + bytes.size())
        throw py::buffer_error("the picture reaches beyond the memory block that it is around");
}

std::unique_ptr<Shown> ShowPicture(Object* picture) {
    const Pixels pixels = PixelsOf(picture);
    if (pixels.mapped)
        throw py::buffer_error("the picture's pixels are in a file, a window of rows at a time; rows() walks them");
    auto shown = std::make_unique<Shown>();
    static std::uint8_t none[8];
    const bool any = pixels.width > 0 && pixels.height > 0;
    shown->address = any ? RowAddress(picture, 0) : none;
    const std::int64_t stride = any && pixels.height > 1 ? RowAddress(picture, 1) - shown->address : 0;
    if (any) {
        RowAddress(picture, pixels.height - 1);
        shown->address += pixels.first;
    }
    shown->itemSize = pixels.itemSize;
    shown->dimensions = pixels.channels == 1 ? 2 : 3;
    shown->shape[0] = pixels.height;
    shown->shape[1] = pixels.width;
    shown->shape[2] = pixels.channels;
    shown->strides[0] = stride ? stride : pixels.width * pixels.pixelSize;
    shown->strides[1] = pixels.pixelSize;
    shown->strides[2] = pixels.itemSize;
    shown->held = WithParents(picture);
    RefuseOutside(*shown);
    return shown;
}

std::unique_ptr<Shown> ShowBlock(Object* block) {
    host::PinMemoryBlock(block);
    const auto bytes = host::BytesOfMemoryBlock(block);
    auto shown = std::make_unique<Shown>();
    static std::uint8_t none;
    shown->address = bytes.empty() ? &none : bytes.data();
    shown->shape[0] = static_cast<Py_ssize_t>(bytes.size());
    shown->strides[0] = 1;
    return shown;
}

std::unique_ptr<Shown> Show(Object* object) {
    if (IsPicture(object)) return ShowPicture(object);
    const host::Class& blocks = host::Runtime::Get().ClassNamed("MemoryBlock");
    if (object && IsA(object, blocks) && !(host::PinMemoryBlock(object) && host::BytesOfMemoryBlock(object).empty()))
        return ShowBlock(object);
    throw py::buffer_error("only pictures and memory blocks of a known size show their bytes");
}

// --- Python's protocol --------------------------------------------------------------------------------

bool IsPacked(const Shown& shown) {
    Py_ssize_t expected = shown.itemSize;
    for (int d = shown.dimensions - 1; d >= 0; expected *= shown.shape[d], --d)
        if (shown.shape[d] > 1 && shown.strides[d] != expected) return false;
    return true;
}

void Fill(Py_buffer* view, PyObject* wrapper, Shown& shown, int flags) {
    const bool strides = (flags & PyBUF_STRIDES) == PyBUF_STRIDES;
    const bool packed = (flags & PyBUF_C_CONTIGUOUS) == PyBUF_C_CONTIGUOUS || !strides;
    if ((packed && !IsPacked(shown)) || (flags & PyBUF_F_CONTIGUOUS) == PyBUF_F_CONTIGUOUS)
        throw py::buffer_error("the rows do not lie one after the other without gaps");
    view->buf = shown.address;
    view->itemsize = shown.itemSize;
    view->len = shown.itemSize;
    for (int d = 0; d < shown.dimensions; ++d) view->len *= shown.shape[d];
    view->readonly = 0;
    view->ndim = shown.dimensions;
    view->format = (flags & PyBUF_FORMAT) ? (shown.itemSize == 1 ? formatOfBytes : formatOfFloats) : nullptr;
    view->shape = (flags & PyBUF_ND) ? shown.shape : nullptr;
    view->strides = strides ? shown.strides : nullptr;
    view->suboffsets = nullptr;
    view->obj = Py_NewRef(wrapper);
}

// --- Lent memory --------------------------------------------------------------------------------------

std::unordered_map<Object*, Py_buffer>& LentBuffers() {
    static auto* const lent = new std::unordered_map<Object*, Py_buffer>;
    return *lent;
}

const host::Class& LentClass() {
    static const host::Class* const lent = [] {
        host::Runtime& runtime = host::Runtime::Get();
        auto type = std::make_unique<host::Class>("PythonMemory", &runtime.ClassNamed("MemoryBlock"));
        type->SetDestructor([](Object* block) {
            const WithInterpreter interpreter;
            if (auto node = LentBuffers().extract(block)) PyBuffer_Release(&node.mapped());
        });
        return runtime.AddClass(std::move(type));
    }();
    return *lent;
}

// --- Rows by copy -------------------------------------------------------------------------------------

// The bytes of one row between its place in the picture and a packed array.
template <class Copy>
void CopyRow(std::uint8_t* row, std::uint8_t* packed, const Pixels& pixels, const Copy& copy) {
    const std::int64_t bytes = pixels.channels * pixels.itemSize;
    row += pixels.first;
    if (bytes == pixels.pixelSize) return copy(row, packed, bytes * pixels.width);
    for (std::int64_t x = 0; x < pixels.width; ++x) copy(row + x * pixels.pixelSize, packed + x * bytes, bytes);
}

template <class Copy>
void CopyRows(py::handle picture, std::int64_t first, const py::buffer_info& rows, const Copy& copy) {
    Object* const object = Unwrap(picture.ptr());
    const Inside inside;
    if (!IsPicture(object)) throw py::type_error("a picture is needed");
    const Pixels pixels = PixelsOf(object);
    const std::int64_t rowBytes = pixels.width * pixels.channels * pixels.itemSize;
    const std::int64_t count = rows.ndim ? rows.shape[0] : 0;
    if (first < 0 || first + count > pixels.height || rows.size * rows.itemsize != count * rowBytes)
        throw py::value_error("the array is not of rows of this picture");
    Py_ssize_t expected = rows.itemsize;
    for (py::ssize_t d = rows.ndim - 1; d >= 0; expected *= rows.shape[d], --d)
        if (rows.shape[d] > 1 && rows.strides[d] != expected) throw py::value_error("the array has gaps");
    if (rowBytes == 0) return;
    auto* packed = static_cast<std::uint8_t*>(rows.ptr);
    for (std::int64_t y = 0; y < count; ++y, packed += rowBytes)
        CopyRow(RowAddress(object, first + y), packed, pixels, copy);
}

}  // namespace

int GetBuffer(PyObject* wrapper, Py_buffer* view, int flags) {
    view->obj = nullptr;
    return AtPythonBorder(
        [&] {
            const Inside inside;
            std::unique_ptr<Shown> shown = Show(Unwrap(wrapper));
            Fill(view, wrapper, *shown, flags);
            for (const Ref<Object>& object : shown->held) AddView(object.get());
            view->internal = shown.release();
            return 0;
        },
        -1);
}

void ReleaseBuffer(PyObject*, Py_buffer* view) {
    auto* const shown = static_cast<Shown*>(view->internal);
    for (Ref<Object>& object : shown->held) {
        RemoveView(object.get());
        GiveUp(object.Detach());
    }
    delete shown;
}

py::tuple ShapeOf(py::handle picture) {
    const Inside inside;
    Object* const object = Unwrap(picture.ptr());
    if (!IsPicture(object)) throw py::type_error("a picture is needed");
    const Pixels pixels = PixelsOf(object);
    const py::tuple shape = pixels.channels == 1 ? py::make_tuple(pixels.height, pixels.width)
                                                 : py::make_tuple(pixels.height, pixels.width, pixels.channels);
    return py::make_tuple(shape, pixels.itemSize == 1 ? "B" : "f");
}

void ReadRows(py::handle picture, std::int64_t first, const py::buffer& rows) {
    CopyRows(picture, first, rows.request(true),
             [](std::uint8_t* row, std::uint8_t* packed, std::int64_t bytes) { std::memcpy(packed, row, bytes); });
}

void WriteRows(py::handle picture, std::int64_t first, const py::buffer& rows) {
    CopyRows(picture, first, rows.request(),
             [](std::uint8_t* row, std::uint8_t* packed, std::int64_t bytes) { std::memcpy(row, packed, bytes); });
}

py::object Lend(const py::buffer& buffer) {
    Py_buffer view;
    if (PyObject_GetBuffer(buffer.ptr(), &view, PyBUF_STRIDES | PyBUF_WRITABLE) != 0) throw py::error_already_set();
    const Inside inside;
    Ref<Object> block = host::NewForeignMemoryBlock(static_cast<std::uint8_t*>(view.buf), LentClass());
    if (!block) {
        PyBuffer_Release(&view);
        throw std::bad_alloc();
    }
    LentBuffers()[block.get()] = view;
    return Wrap(block);
}

}  // namespace pytqx
