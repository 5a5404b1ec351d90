// What there is to know of each kind of value, one row a kind.
#pragma once

#include <cstdint>
#include <iterator>
#include <string_view>

#include "sdk/Declare.h"

namespace host {

// What a value is. Kind::None is "nothing": the result of a method that gives none.
using Kind = sdk::declare::Kind;

enum class NumberForm : std::uint8_t { None, Whole, Real };

struct KindRow {
    Kind kind;
    std::string_view name;  // as a declaration spells it; empty where that depends on more than the kind
    std::int32_t size;      // bytes of a field of an instance
    NumberForm form;
    bool isSigned;
    int digits;       // bits of a number's magnitude that are kept exactly
    int variantStep;  // where a variant goes sooner among overloads: to what loses least of what it may hold
};

inline constexpr KindRow kKinds[] = {
    {Kind::None, "", 8, NumberForm::None, false, 0, 0},
    {Kind::Integer, "Integer", 4, NumberForm::Whole, true, 31, 3},
    {Kind::Int64, "Int64", 8, NumberForm::Whole, true, 63, 2},
    {Kind::UInt32, "UInt32", 4, NumberForm::Whole, false, 32, 6},
    {Kind::UInt8, "UInt8", 1, NumberForm::Whole, false, 8, 9},
    {Kind::Int8, "Int8", 1, NumberForm::Whole, true, 7, 10},
    {Kind::Int16, "Int16", 2, NumberForm::Whole, true, 15, 7},
    {Kind::UInt16, "UInt16", 2, NumberForm::Whole, false, 16, 8},
    {Kind::UInt64, "UInt64", 8, NumberForm::Whole, false, 64, 4},
    {Kind::Double, "Double", 8, NumberForm::Real, true, 53, 1},
    {Kind::Single, "Single", 4, NumberForm::Real, true, 24, 5},
    {Kind::Boolean, "Boolean", 1, NumberForm::None, false, 1, 12},
    {Kind::Color, "Color", 4, NumberForm::None, false, 32, 11},
    {Kind::String, "String", 8, NumberForm::None, false, 0, 0},
    {Kind::Array, "", 8, NumberForm::None, false, 0, 0},
    {Kind::Object, "", 8, NumberForm::None, false, 0, 0},
};

constexpr const KindRow& RowOf(Kind kind) { return kKinds[static_cast<std::size_t>(kind)]; }

static_assert(
    [] {
        for (std::size_t i = 0; i < std::size(kKinds); ++i)
            if (kKinds[i].kind != static_cast<Kind>(i)) return false;
        return std::size(kKinds) == static_cast<std::size_t>(Kind::Object) + 1;
    }(),
    "a row for every kind, in their order");

static_assert(Kind::String < Kind::Array && Kind::Array < Kind::Object && Kind::Color < Kind::String,
              "references come last");

constexpr bool IsWholeKind(Kind kind) { return RowOf(kind).form == NumberForm::Whole; }
constexpr bool IsRealKind(Kind kind) { return RowOf(kind).form == NumberForm::Real; }
constexpr bool IsNumberKind(Kind kind) { return RowOf(kind).form != NumberForm::None; }

// The ends of the range of a whole kind.
constexpr std::int64_t LowestOf(Kind whole) {
    return RowOf(whole).isSigned ? -((std::int64_t{1} << (RowOf(whole).digits - 1)) - 1) * 2 - 2 : 0;
}
constexpr std::uint64_t HighestOf(Kind whole) { return ~std::uint64_t{0} >> (64 - RowOf(whole).digits); }

// A whole number brought into a whole kind's range by dropping high bits.
constexpr std::int64_t WrapTo(std::int64_t value, Kind whole) {
    const int dropped = 64 - 8 * RowOf(whole).size;
    const std::uint64_t high = static_cast<std::uint64_t>(value) << dropped;
    return RowOf(whole).isSigned ? static_cast<std::int64_t>(high) >> dropped
                                 : static_cast<std::int64_t>(high >> dropped);
}

// Whether every number of one kind is one of the other as well.
constexpr bool HoldsAll(Kind holder, Kind kind) {
    const KindRow& to = RowOf(holder);
    const KindRow& from = RowOf(kind);
    if (from.form == NumberForm::Real && to.form == NumberForm::Whole) return false;
    return from.digits <= to.digits && (to.isSigned || !from.isSigned);
}

}  // namespace host
