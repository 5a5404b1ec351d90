// Calls by libffi.
#include <ffi.h>

#include <array>
#include <cassert>
#include <cstring>
#include <new>

#include "host/calls/ForeignCall.h"
#include "host/objects/Signature.h"

namespace host {

namespace {

// The instance, the arguments and an assigned value.
constexpr std::size_t kMostCells = kMostParameters + 2;

// libffi gives and takes narrow results as a whole register, of which the low bytes count,
// wherever in it they are.
union Result {
    Cell cell;
    ffi_arg whole;
};

// What libffi calls whole numbers of 1, 2, 4 and 8 bytes.
ffi_type* WholeType(const KindRow& row) {
    switch (row.size) {
        case 1:
            return row.isSigned ? &ffi_type_sint8 : &ffi_type_uint8;
        case 2:
            return row.isSigned ? &ffi_type_sint16 : &ffi_type_uint16;
        case 4:
            return row.isSigned ? &ffi_type_sint32 : &ffi_type_uint32;
        default:
            return row.isSigned ? &ffi_type_sint64 : &ffi_type_uint64;
    }
}

ffi_type* TypeOf(Kind kind) {
    const KindRow& row = RowOf(kind);
    if (kind == Kind::None) return &ffi_type_void;
    if (row.form == NumberForm::Real) return row.size == 8 ? &ffi_type_double : &ffi_type_float;
    return IsReferenceKind(kind) ? &ffi_type_pointer : WholeType(row);
}

bool IsWidened(Kind kind) {
    const bool whole = kind != Kind::None && !IsRealKind(kind) && !IsReferenceKind(kind);
    return whole && RowOf(kind).size < static_cast<std::int32_t>(sizeof(ffi_arg));
}

Cell Narrowed(const Result& result, Kind kind) {
    Cell cell = result.cell;
    if (IsWidened(kind)) SetWhole(cell, RowOf(kind).size, static_cast<std::int64_t>(result.whole));
    return cell;
}

void Give(const Cell& cell, Kind kind, void* result) {
    if (!IsWidened(kind)) {
        if (kind != Kind::None) std::memcpy(result, &cell, static_cast<std::size_t>(CellSize(kind)));
        return;
    }
    const auto whole = static_cast<ffi_arg>(WrapTo(WholeIn(cell, RowOf(kind).size), kind));
    std::memcpy(result, &whole, sizeof(whole));
}

}  // namespace

struct ForeignShape::Parts {
    ffi_cif cif{};
    std::vector<ffi_type*> types;
};

ForeignShape::ForeignShape(std::vector<Kind> arguments, Kind result)
    : arguments_(std::move(arguments)), result_(result), parts_(new Parts) {
    for (const Kind kind : arguments_) parts_->types.push_back(TypeOf(kind));
    [[maybe_unused]] const ffi_status status = ffi_prep_cif(
        &parts_->cif, FFI_DEFAULT_ABI, static_cast<unsigned>(arguments_.size()), TypeOf(result_), parts_->types.data());
    assert(status == FFI_OK);
}

ForeignShape::~ForeignShape() = default;

Cell ForeignShape::Call(sdk::AnyFunction function, std::span<Cell> arguments) const {
    std::array<void*, kMostCells> pointers;
    for (std::size_t i = 0; i < arguments.size(); ++i) pointers[i] = &arguments[i];
    Result result{};
    ffi_call(&parts_->cif, function, &result, pointers.data());
    return Narrowed(result, result_);
}

struct ForeignClosure::Parts {
    const ForeignShape* shape;
    Body body;
    void* context;
    ffi_closure* closure = nullptr;
    void* code = nullptr;

    static void Called(ffi_cif*, void* result, void** arguments, void* parts) noexcept;
};

void ForeignClosure::Parts::Called(ffi_cif*, void* result, void** arguments, void* parts) noexcept {
    const Parts& self = *static_cast<const Parts*>(parts);
    const std::vector<Kind>& kinds = self.shape->arguments();
    std::array<Cell, kMostCells> cells{};
    for (std::size_t i = 0; i < kinds.size(); ++i)
        std::memcpy(&cells[i], arguments[i], static_cast<std::size_t>(CellSize(kinds[i])));
    Give(self.body({cells.data(), kinds.size()}, self.context), self.shape->result(), result);
}

ForeignClosure::ForeignClosure(const ForeignShape& shape, Body body, void* context)
    : parts_(new Parts{&shape, body, context}) {
    parts_->closure = static_cast<ffi_closure*>(ffi_closure_alloc(sizeof(ffi_closure), &parts_->code));
    if (!parts_->closure) throw std::bad_alloc();
    [[maybe_unused]] const ffi_status status =
        ffi_prep_closure_loc(parts_->closure, &shape.parts_->cif, &Parts::Called, parts_.get(), parts_->code);
    assert(status == FFI_OK);
}

ForeignClosure::~ForeignClosure() { ffi_closure_free(parts_->closure); }

sdk::AnyFunction ForeignClosure::function() const {
    sdk::AnyFunction code = nullptr;
    std::memcpy(&code, &parts_->code, sizeof(code));
    return code;
}

}  // namespace host
