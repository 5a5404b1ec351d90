// Calls by the table of functions of a WebAssembly program: a function's address is its place there,
// and each has one exact type, of which JavaScript need not know more than the numbers to pass.
#include <emscripten.h>

#include <array>
#include <cstring>
#include <string>
#include <type_traits>
#include <utility>

#include "host/calls/ForeignCall.h"
#include "host/objects/Signature.h"

namespace host {

namespace {

// The instance, the arguments and an assigned value.
constexpr std::size_t kMostCells = kMostParameters + 2;

// A letter for each type that the machine knows: i and j are whole numbers of 32 and 64 bits, f and d
// floating point. The result, v for nothing, stands first.
char LetterOf(Kind kind) {
    if (kind == Kind::None) return 'v';
    if (kind == Kind::Double) return 'd';
    if (kind == Kind::Single) return 'f';
    return CellSize(kind) == 8 ? 'j' : 'i';
}

bool IsNarrow(Kind kind) { return !IsRealKind(kind) && !IsReferenceKind(kind) && RowOf(kind).size < 4; }

// Bytes and halves are passed as 32 bits.
Cell Widened(Cell cell, Kind kind) {
    if (IsNarrow(kind)) cell.word = static_cast<std::uint32_t>(WrapTo(WholeIn(cell, RowOf(kind).size), kind));
    return cell;
}

Cell Narrowed(Cell cell, Kind kind) {
    if (IsNarrow(kind)) SetWhole(cell, RowOf(kind).size, cell.word);
    return cell;
}

// --- Calls without JavaScript: most functions take nothing but 32-bit numbers and addresses. ---

using DirectCall = Cell (*)(sdk::AnyFunction function, const Cell* cells);

constexpr std::size_t kMostWords = 12;

template <std::size_t>
using Word = std::uint32_t;

template <class Result, std::size_t... At>
Cell CallWithWords(sdk::AnyFunction function, const Cell* cells) {
    const auto typed = reinterpret_cast<Result (*)(Word<At>...)>(function);
    Cell result{};
    if constexpr (std::is_void_v<Result>) {
        typed(cells[At].word...);
    } else {
        const Result value = typed(cells[At].word...);
        std::memcpy(&result, &value, sizeof(value));
    }
    return result;
}

template <class Result, std::size_t Count>
constexpr DirectCall ForCount() {
    return []<std::size_t... At>(std::index_sequence<At...>) { return &CallWithWords<Result, At...>; }
    (std::make_index_sequence<Count>());
}

template <class Result>
DirectCall ForResult(std::size_t count) {
    static constexpr auto table = []<std::size_t... Count>(std::index_sequence<Count...>) {
        return std::array<DirectCall, sizeof...(Count)>{ForCount<Result, Count>()...};
    }
    (std::make_index_sequence<kMostWords + 1>());
    return table[count];
}

// Null where there is none for the letters.
DirectCall DirectCallFor(const std::string& letters) {
    const std::size_t count = letters.size() - 1;
    if (letters.find_first_not_of('i', 1) != letters.npos || count > kMostWords) return nullptr;
    if (letters[0] == 'v') return ForResult<void>(count);
    if (letters[0] == 'd') return ForResult<double>(count);
    if (letters[0] == 'f') return ForResult<float>(count);
    return letters[0] == 'j' ? ForResult<std::int64_t>(count) : ForResult<std::uint32_t>(count);
}

}  // namespace

// --- The others, and functions that are made. ---------------------------------------------------
//
// Cells are 8 bytes apart. A whole number of 64 bits is JavaScript's BigInt.
// clang-format off
extern "C" {

using CellsCalled = void (*)(void* context, void* cells, void* result);

// Gives Module a reader and a writer of cells by letter.
EM_JS(void, TqxPrepareCells, (), {
    if (Module.readCell) return;
    Module.readCell = (letter, at) => {
        if (letter === 'i') return HEAP32[at >> 2];
        if (letter === 'f') return HEAPF32[at >> 2];
        if (letter === 'd') return HEAPF64[at >> 3];
        if (letter === 'j') return new DataView(HEAP8.buffer).getBigInt64(at, true);
    };
    Module.writeCell = (letter, at, value) => {
        if (letter === 'i') HEAP32[at >> 2] = value;
        if (letter === 'f') HEAPF32[at >> 2] = value;
        if (letter === 'd') HEAPF64[at >> 3] = value;
        if (letter === 'j') new DataView(HEAP8.buffer).setBigInt64(at, value, true);
    };
});

// Calls what stands at a place of the table.
EM_JS(void, TqxCallInTable, (sdk::AnyFunction place, const char* letters, const void* cells, void* result), {
    const types = UTF8ToString(letters);
    const given = [];
    for (let i = 1; i < types.length; ++i) given.push(Module.readCell(types[i], cells + 8 * (i - 1)));
    Module.writeCell(types[0], result, wasmTable.get(place)(...given));
});

// Adds a function to the table that has `called` turn cells into a result; gives its place.
EM_JS(void*, TqxAddToTable, (const char* letters, CellsCalled called, void* context), {
    const types = UTF8ToString(letters);
    return addFunction((...given) => {
        const top = stackSave();
        const result = stackAlloc(8 * types.length);
        given.forEach((value, i) => Module.writeCell(types[i + 1], result + 8 * (i + 1), value));
        wasmTable.get(called)(context, result + 8, result);
        const value = Module.readCell(types[0], result);
        stackRestore(top);
        return value;
    }, types);
});

EM_JS(void, TqxRemoveFromTable, (void* place), { removeFunction(place); });
}
// clang-format on

struct ForeignShape::Parts {
    std::string letters;
    DirectCall direct = nullptr;
};

ForeignShape::ForeignShape(std::vector<Kind> arguments, Kind result)
    : arguments_(std::move(arguments)), result_(result), parts_(new Parts) {
    TqxPrepareCells();
    parts_->letters = LetterOf(result_);
    for (const Kind kind : arguments_) parts_->letters += LetterOf(kind);
    parts_->direct = DirectCallFor(parts_->letters);
}

ForeignShape::~ForeignShape() = default;

Cell ForeignShape::Call(sdk::AnyFunction function, std::span<Cell> arguments) const {
    static_assert(sizeof(Cell) == 8);
    for (std::size_t i = 0; i < arguments.size(); ++i) arguments[i] = Widened(arguments[i], arguments_[i]);
    if (parts_->direct) return Narrowed(parts_->direct(function, arguments.data()), result_);
    Cell result{};
    TqxCallInTable(function, parts_->letters.c_str(), arguments.data(), &result);
    return Narrowed(result, result_);
}

struct ForeignClosure::Parts {
    const ForeignShape* shape;
    Body body;
    void* context;
    void* place = nullptr;

    static void Called(void* parts, void* arguments, void* result) noexcept;
};

void ForeignClosure::Parts::Called(void* parts, void* arguments, void* result) noexcept {
    const Parts& self = *static_cast<const Parts*>(parts);
    const std::vector<Kind>& kinds = self.shape->arguments();
    std::array<Cell, kMostCells> cells{};
    for (std::size_t i = 0; i < kinds.size(); ++i)
        cells[i] = Narrowed(static_cast<const Cell*>(arguments)[i], kinds[i]);
    const Cell given = Widened(self.body({cells.data(), kinds.size()}, self.context), self.shape->result());
    std::memcpy(result, &given, sizeof(given));
}

ForeignClosure::ForeignClosure(const ForeignShape& shape, Body body, void* context)
    : parts_(new Parts{&shape, body, context}) {
    parts_->place = TqxAddToTable(shape.parts_->letters.c_str(), &Parts::Called, parts_.get());
}

ForeignClosure::~ForeignClosure() { TqxRemoveFromTable(parts_->place); }

sdk::AnyFunction ForeignClosure::function() const { return reinterpret_cast<sdk::AnyFunction>(parts_->place); }

}  // namespace host
