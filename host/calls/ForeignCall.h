// Calls of functions of which only the kinds of their arguments are known, and functions that are
// made while the program runs.
//
// The build has one of two: libffi (ForeignCallFfi.cpp), or the table of functions of a WebAssembly
// program (ForeignCallWasm.cpp). Nothing else of the host knows which.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "host/objects/Kinds.h"
#include "sdk/PluginInterface.h"

namespace host {

// One argument or result as it is passed. Of a number the member of its size counts.
union Cell {
    std::uint8_t byte;
    std::uint16_t half;
    std::uint32_t word;
    std::int64_t int64;
    double real;
    float single;
    void* pointer;
};

constexpr bool IsReferenceKind(Kind kind) { return kind >= Kind::String; }

// Bytes of a value of a kind, in a cell and as an instance's field.
constexpr std::int32_t CellSize(Kind kind) {
    return IsReferenceKind(kind) ? static_cast<std::int32_t>(sizeof(void*)) : RowOf(kind).size;
}

// The low bytes of a number, as many as its kind has.
inline void SetWhole(Cell& cell, std::int32_t size, std::int64_t bits) {
    if (size == 1) cell.byte = static_cast<std::uint8_t>(bits);
    if (size == 2) cell.half = static_cast<std::uint16_t>(bits);
    if (size == 4) cell.word = static_cast<std::uint32_t>(bits);
    if (size == 8) cell.int64 = bits;
}

// Those bytes; a sign is theirs to tell (WrapTo).
inline std::int64_t WholeIn(const Cell& cell, std::int32_t size) {
    if (size == 1) return cell.byte;
    if (size == 2) return cell.half;
    return size == 4 ? std::int64_t{cell.word} : cell.int64;
}

// The kinds of a function's arguments and of its result (Kind::None for nothing).
class ForeignShape {
  public:
    ForeignShape(std::vector<Kind> arguments, Kind result);
    ~ForeignShape();
    ForeignShape(const ForeignShape&) = delete;
    ForeignShape& operator=(const ForeignShape&) = delete;

    // Calls a function of this shape with a cell for each argument.
    Cell Call(sdk::AnyFunction function, std::span<Cell> arguments) const;

    const std::vector<Kind>& arguments() const { return arguments_; }
    Kind result() const { return result_; }

  private:
    friend class ForeignClosure;
    struct Parts;
    std::vector<Kind> arguments_;
    Kind result_;
    std::unique_ptr<Parts> parts_;
};

// A function of some shape that calls a body. The shape must live as long.
class ForeignClosure {
  public:
    using Body = Cell (*)(std::span<const Cell> arguments, void* context) noexcept;

    // Throws std::bad_alloc when there is no room for code.
    ForeignClosure(const ForeignShape& shape, Body body, void* context);
    ~ForeignClosure();
    ForeignClosure(const ForeignClosure&) = delete;
    ForeignClosure& operator=(const ForeignClosure&) = delete;

    sdk::AnyFunction function() const;

  private:
    struct Parts;
    std::unique_ptr<Parts> parts_;
};

}  // namespace host
