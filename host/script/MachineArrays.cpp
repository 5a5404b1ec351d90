// Instructions on arrays: elements, sizes, order.
#include <algorithm>
#include <numeric>
#include <set>
#include <vector>

#include "host/framework/NumberFunctions.h"
#include "host/messages/RunningMessages.h"
#include "host/script/Machine.h"
#include "host/script/MachineAccess.h"
#include "host/script/Values.h"

namespace script {

using host::Value;

namespace {

// An array may grow to this many elements; a mistyped size is an exception, not a dead machine.
constexpr std::int64_t kMostElements = 100'000'000;

void RefuseTooMany(std::int64_t count) {
    if (count > kMostElements) Throw(host::kScriptRaises.tooManyElements(kMostElements));
}

host::Array& ArrayIn(const Value& value) {
    if (!value.array()) ThrowNoArray();
    return *value.array();
}

std::size_t CountFor(std::int64_t highest) {
    if (highest < -1) Throw(host::kScriptRaises.highestIndex(kMostElements - 1, highest));
    RefuseTooMany(highest + 1);
    return static_cast<std::size_t>(highest + 1);
}

std::size_t IndexIn(const host::Array& array, std::int64_t index, std::size_t end) {
    if (index < 0 || index >= static_cast<std::int64_t>(end)) ThrowOutOfBounds(index, array, end);
    return static_cast<std::size_t>(index);
}

// The order of an array's elements.
class Before {
  public:
    explicit Before(const host::Array& array)
        : texts_(array.element.kind == host::Kind::String),
          reals_(host::IsRealKind(array.element.kind)),
          unsigned_(array.element.kind == host::Kind::UInt64) {}

    bool operator()(const Value& a, const Value& b) const {
        if (texts_) return CompareTexts(a, b) < 0;
        // Not-a-number comes last, so that there is an order at all.
        if (reals_) return a.real() < b.real() || (b.real() != b.real() && a.real() == a.real());
        if (unsigned_) return static_cast<std::uint64_t>(a.bits()) < static_cast<std::uint64_t>(b.bits());
        return a.bits() < b.bits();
    }

  private:
    bool texts_, reals_, unsigned_;
};

void Sort(host::Array& array) { std::stable_sort(array.values.begin(), array.values.end(), Before(array)); }

// Element i becomes the one that was at order[i].
void Reorder(host::Array& array, const std::vector<std::size_t>& order) {
    std::vector<Value> values(std::make_move_iterator(array.values.begin()),
                              std::make_move_iterator(array.values.end()));
    for (std::size_t i = 0; i < order.size(); ++i) array.values[i] = std::move(values[order[i]]);
}

// Each array once, however often it is named.
void SortWith(host::Array& array, const CallSite& others, const Value* r) {
    std::set<host::Array*> arrays{&array};
    for (const std::uint16_t index : others.arguments) {
        host::Array& other = ArrayIn(r[index]);
        if (other.values.size() != array.values.size())
            Throw(host::kScriptRaises.sortWith(array.values.size(), other.values.size()));
        arrays.insert(&other);
    }
    std::vector<std::size_t> order(array.values.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    const Before before(array);
    std::stable_sort(order.begin(), order.end(),
                     [&](std::size_t a, std::size_t b) { return before(array.values[a], array.values[b]); });
    for (host::Array* const one : arrays) Reorder(*one, order);
}

// By Durstenfeld's form of the Fisher-Yates shuffle.
void Shuffle(host::Array& array) {
    for (std::size_t left = array.values.size(); left > 1; --left) {
        const auto drawn = static_cast<std::size_t>(host::Rnd() * static_cast<double>(left));
        std::swap(array.values[left - 1], array.values[drawn]);
    }
}

bool SameElement(const Value& a, const Value& b) {
    if (a.kind() == host::Kind::String && b.kind() == host::Kind::String) return CompareTexts(a, b) == 0;
    if (a.IsNumber() && b.IsNumber() && (a.kind() != b.kind() || !a.IsWhole())) return a.ToDouble() == b.ToDouble();
    return a.kind() == b.kind() && a.bits() == b.bits();
}

std::int64_t IndexOf(const host::Array& array, const Value& wanted, std::int64_t from) {
    const auto count = static_cast<std::int64_t>(array.values.size());
    const auto found = std::find_if(array.values.begin() + std::clamp(from, std::int64_t{0}, count), array.values.end(),
                                    [&](const Value& value) { return SameElement(value, wanted); });
    return found == array.values.end() ? -1 : found - array.values.begin();
}

// Shrinks or grows. What is dropped goes after the array is whole again, since destructors may
// look at it.
void Resize(host::Array& array, std::size_t count) {
    std::vector<Value> dropped;
    if (count < array.values.size()) {
        dropped.assign(std::make_move_iterator(array.values.begin() + static_cast<std::ptrdiff_t>(count)),
                       std::make_move_iterator(array.values.end()));
    }
    array.values.resize(count, host::DefaultOf(array.element));
}

}  // namespace

void ThrowNoArray() { Throw(host::kScriptRaises.noArray()); }

void ThrowOutOfBounds(std::int64_t index, const host::Array& array) {
    ThrowOutOfBounds(index, array, array.values.size());
}

void ThrowOutOfBounds(std::int64_t index, const host::Array& array, std::size_t end) {
    std::string which = end == 0 ? "the array is empty" : "the highest is " + std::to_string(end - 1);
    if (end > array.values.size()) which += ", behind the last element";
    Throw(host::kScriptRaises.index(index, which));
}

namespace {

// --- Arrays of several dimensions: their elements lie row by row in one array, which knows its highest
// indices. One that is only declared has none yet.

std::vector<std::int32_t> HighestOf(const CallSite& site, const Value* r) {
    std::vector<std::int32_t> highest;
    for (const std::uint16_t index : site.arguments)
        highest.push_back(index == kNoRegister ? -1 : static_cast<std::int32_t>(r[index].bits()));
    return highest;
}

std::size_t CountOf(const std::vector<std::int32_t>& highest) {
    std::int64_t count = 1;
    for (const std::int32_t one : highest) {
        count *= static_cast<std::int64_t>(CountFor(one));
        RefuseTooMany(count);
    }
    return static_cast<std::size_t>(count);
}

host::Ref<host::Array> MakeGrid(const host::Type& element, std::vector<std::int32_t> highest) {
    host::Ref<host::Array> array = host::MakeArray(element, CountOf(highest));
    array->highest = std::move(highest);
    return array;
}

// Elements whose indices exist before and after keep their values.
void ResizeGrid(host::Array& array, std::vector<std::int32_t> highest) {
    host::Ref<host::Array> resized = MakeGrid(array.element, highest);
    std::vector<std::int64_t> at(highest.size(), 0);
    for (std::size_t to = 0; to < resized->values.size(); ++to) {
        std::size_t from = 0;
        bool known = at.size() == array.highest.size();
        for (std::size_t i = 0; known && i < at.size(); ++i) {
            known = at[i] <= array.highest[i];
            from = from * (static_cast<std::size_t>(array.highest[i]) + 1) + static_cast<std::size_t>(at[i]);
        }
        if (known) resized->values[to] = array.values[from];
        for (std::size_t i = at.size(); i-- > 0 && ++at[i] > highest[i];) at[i] = 0;
    }
    // What is dropped goes with `resized`, after the array is whole again.
    std::swap(array.values, resized->values);
    std::swap(array.highest, resized->highest);
}

std::int64_t GridIndex(const host::Array& array, const CallSite& site, const Value* r) {
    std::int64_t at = 0;
    for (std::size_t i = 0; i < site.arguments.size(); ++i) {
        const std::int64_t index = r[site.arguments[i]].bits();
        const std::int64_t highest = i < array.highest.size() ? array.highest[i] : -1;
        if (index < 0 || index > highest) Throw(host::kScriptRaises.gridIndex(index, i + 1, highest));
        at = at * (highest + 1) + index;
    }
    return at;
}

std::int64_t HighestIn(const host::Array& array, std::int64_t dimension) {
    if (array.highest.empty() && dimension == 1) return host::UpperBound(&array);
    if (dimension < 1 || dimension > static_cast<std::int64_t>(array.highest.size()))
        Throw(host::kScriptRaises.noDimension(dimension));
    return array.highest[static_cast<std::size_t>(dimension) - 1];
}

}  // namespace

void Machine::MakeArray(Instruction instruction, const Function& function, Value* r) {
    const CallSite& site = function.sites[instruction.b];
    host::Ref<host::Array> array = host::MakeArray(function.types[instruction.c].host);
    array->values.reserve(site.arguments.size());
    for (const std::uint16_t index : site.arguments) array->values.push_back(r[index]);
    r[instruction.a] = Value(std::move(array));
}

void Machine::PerformArray(Instruction instruction, const Function& function, Value* r) {
    Value* a = &r[instruction.a];
    switch (instruction.op) {
        case Op::NewArray: {
            const bool sized = instruction.b != kNoRegister;
            const std::size_t count = sized ? CountFor(r[instruction.b].bits()) : 0;
            *a = Value(host::MakeArray(function.types[instruction.c].host, count));
            return;
        }
        case Op::NewGrid:
            *a = Value(MakeGrid(function.types[instruction.c].host, HighestOf(function.sites[instruction.b], r)));
            return;
        case Op::ReDimGrid:
            return ResizeGrid(ArrayIn(*a), HighestOf(function.sites[instruction.b], r));
        case Op::GridIndex:
            a->bits() = GridIndex(ArrayIn(r[instruction.b]), function.sites[instruction.c], r);
            return;
        case Op::UboundOf:
            a->bits() = HighestIn(ArrayIn(r[instruction.b]), r[instruction.c].bits());
            return;
        case Op::Append: {
            host::Array& array = ArrayIn(*a);
            RefuseTooMany(static_cast<std::int64_t>(array.values.size()) + 1);
            array.values.push_back(r[instruction.b]);
            return;
        }
        case Op::Insert: {
            host::Array& array = ArrayIn(*a);
            const std::size_t at = IndexIn(array, r[instruction.b].bits(), array.values.size() + 1);
            RefuseTooMany(static_cast<std::int64_t>(array.values.size()) + 1);
            array.values.Insert(at, r[instruction.c]);
            return;
        }
        case Op::Remove: {
            host::Array& array = ArrayIn(*a);
            const std::size_t at = IndexIn(array, r[instruction.b].bits(), array.values.size());
            const Value removed = std::move(array.values[at]);
            array.values.Erase(at);
            return;
        }
        case Op::ReDim:
            Resize(ArrayIn(*a), CountFor(r[instruction.b].bits()));
            return;
        case Op::Sort:
            return Sort(ArrayIn(*a));
        case Op::SortWith:
            return SortWith(ArrayIn(*a), function.sites[instruction.b], r);
        case Op::Shuffle:
            return Shuffle(ArrayIn(*a));
        case Op::Ubound:
            a->bits() = HighestIn(ArrayIn(r[instruction.b]), 1);
            return;
        case Op::Pop: {
            host::Array& array = ArrayIn(r[instruction.b]);
            if (array.values.empty()) Throw(host::kScriptRaises.emptyPop());
            Value last = std::move(array.values.back());
            array.values.pop_back();
            *a = std::move(last);
            return;
        }
        default: {
            const std::vector<std::uint16_t>& given = function.sites[instruction.c].arguments;
            const std::int64_t from = given.size() > 1 ? r[given[1]].bits() : 0;
            a->bits() = IndexOf(ArrayIn(r[instruction.b]), r[given[0]], from);
            return;
        }
    }
}

}  // namespace script
