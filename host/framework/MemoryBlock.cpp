// Reads and writes of every width, in either order of bytes, within the block's bounds.
#include "host/framework/MemoryBlock.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <vector>

#include "host/framework/ForeignMemory.h"
#include "host/framework/Support.h"
#include "host/objects/GuardedMemory.h"

namespace host {

namespace {

struct MemoryBlockData {
    std::uint8_t* bytes;  // guarded memory of the block's own, or foreign
    std::int64_t size;    // -1: foreign
    bool bigEndian;
    bool pinned;                    // the address was given away
    std::vector<void*>* abandoned;  // former bytes whose address was given away
};

sdk::ClassDefinition definition{.name = "MemoryBlock", .instanceDataSize = sizeof(MemoryBlockData)};

MemoryBlockData& Data(sdk::Object* block) { return DataOf<MemoryBlockData>(block, definition); }

bool IsForeign(const MemoryBlockData& data) { return data.size < 0; }

// --- Life -----------------------------------------------------------------------------------

void Destroy(sdk::Object* block) {
    MemoryBlockData& data = Data(block);
    if (!IsForeign(data)) FreeGuarded(data.bytes);
    if (!data.abandoned) return;
    for (void* bytes : *data.abandoned) FreeGuarded(bytes);
    delete data.abandoned;
}

// Gives the block another size; bytes that both sizes have stay. What was given to a plug-in is
// kept until the block goes, so that a stale address never points at freed memory.
void Resize(MemoryBlockData& data, std::int64_t size) {
    auto* bytes = size > 0 ? static_cast<std::uint8_t*>(AllocateGuarded(static_cast<std::size_t>(size))) : nullptr;
    if (size > 0 && !bytes) throw std::bad_alloc();
    if (bytes && data.size > 0) std::memcpy(bytes, data.bytes, static_cast<std::size_t>(std::min(size, data.size)));
    if (data.pinned && data.bytes) {
        if (!data.abandoned) data.abandoned = new std::vector<void*>;
        data.abandoned->push_back(data.bytes);
    } else {
        FreeGuarded(data.bytes);
    }
    data.bytes = bytes;
    data.size = size;
    data.pinned = false;
}

void Construct(sdk::Object* block, std::int32_t size) {
    if (size < 0) Fail(kDataRaises.blockSize(size));
    Resize(Data(block), size);
}

std::int32_t Size(sdk::Object* block) { return static_cast<std::int32_t>(Data(block).size); }

void SetSize(sdk::Object* block, std::int32_t size) {
    if (IsForeign(Data(block))) Fail(kDataRaises.unknownSize());
    Construct(block, size);
}

bool LittleEndian(sdk::Object* block) { return !Data(block).bigEndian; }
void SetLittleEndian(sdk::Object* block, bool value) { Data(block).bigEndian = !value; }

// --- Bytes ----------------------------------------------------------------------------------

[[noreturn]] void FailRange(const MemoryBlockData& data, std::int64_t offset, std::int64_t length) {
    const std::string bytes = length == 1
                                  ? "Byte " + std::to_string(offset) + " is"
                                  : std::to_string(length) + " bytes at offset " + std::to_string(offset) + " are";
    Fail(IsForeign(data) ? kDataRaises.notReached(bytes) : kDataRaises.notInBlock(bytes, data.size));
}

// Where a byte of a foreign block would be; such a block may begin anywhere.
std::uint8_t* ForeignAddress(const MemoryBlockData& data, std::int64_t offset) {
    return reinterpret_cast<std::uint8_t*>(reinterpret_cast<std::uintptr_t>(data.bytes) +
                                           static_cast<std::uintptr_t>(offset));
}

// Whether the bytes lie in an owned block, or could lie in a foreign one: before the last address.
bool InRange(const MemoryBlockData& data, std::int64_t offset, std::int64_t length) {
    if (offset < 0 || length < 0) return false;
    if (!IsForeign(data)) return offset + length <= data.size;
    return static_cast<std::uintptr_t>(offset + length) <= UINTPTR_MAX - reinterpret_cast<std::uintptr_t>(data.bytes);
}

void Load(sdk::Object* block, std::int64_t offset, void* result, std::int64_t length) {
    const MemoryBlockData& data = Data(block);
    const auto count = static_cast<std::size_t>(length);
    if (!InRange(data, offset, length)) FailRange(data, offset, length);
    if (!IsForeign(data)) {
        if (count > 0) std::memcpy(result, data.bytes + offset, count);
    } else if (!ReadForeign(ForeignAddress(data, offset), result, count)) {
        FailRange(data, offset, length);
    }
}

void Store(sdk::Object* block, std::int64_t offset, const void* bytes, std::int64_t length) {
    MemoryBlockData& data = Data(block);
    const auto count = static_cast<std::size_t>(length);
    if (!InRange(data, offset, length)) FailRange(data, offset, length);
    if (!IsForeign(data)) {
        if (count > 0) std::memcpy(data.bytes + offset, bytes, count);
    } else if (!WriteForeign(ForeignAddress(data, offset), bytes, count)) {
        FailRange(data, offset, length);
    }
}

// --- Numbers --------------------------------------------------------------------------------

template <class Number>
void SwapIfBig(sdk::Object* block, std::uint8_t (&bytes)[sizeof(Number)]) {
    constexpr bool machineIsBig = std::endian::native == std::endian::big;
    if (Data(block).bigEndian != machineIsBig) std::reverse(bytes, bytes + sizeof(Number));
}

// Number is how it is stored, Declared how scripts see it.
template <class Number, class Declared>
Declared GetNumber(sdk::Object* block, std::int32_t offset) {
    std::uint8_t bytes[sizeof(Number)];
    Load(block, offset, bytes, sizeof bytes);
    SwapIfBig<Number>(block, bytes);
    return static_cast<Declared>(std::bit_cast<Number>(bytes));
}

template <class Number, class Declared>
void SetNumber(sdk::Object* block, std::int32_t offset, Declared value) {
    std::uint8_t bytes[sizeof(Number)];
    const Number number = static_cast<Number>(value);
    std::memcpy(bytes, &number, sizeof bytes);
    SwapIfBig<Number>(block, bytes);
    Store(block, offset, bytes, sizeof bytes);
}

template <sdk::Text Declaration, class Number, class Declared>
sdk::MethodRecord NumberMethod() {
    return sdk::AssignableMethod<Declaration, Guarded<&GetNumber<Number, Declared>>,
                                 Guarded<&SetNumber<Number, Declared>>>(sdk::kMemberPortable);
}

bool GetBoolean(sdk::Object* block, std::int32_t offset) {
    return GetNumber<std::uint8_t, std::int32_t>(block, offset) != 0;
}

void SetBoolean(sdk::Object* block, std::int32_t offset, bool value) {
    SetNumber<std::uint8_t, std::int32_t>(block, offset, value);
}

// --- Strings --------------------------------------------------------------------------------

// Finds out whether a range ends where there is something, before memory is taken for it.
void Probe(sdk::Object* block, std::int64_t offset, std::int64_t length) {
    std::uint8_t last;
    if (!InRange(Data(block), offset, length)) FailRange(Data(block), offset, length);
    if (length > 0) Load(block, offset + length - 1, &last, 1);
}

sdk::String* StringValue(sdk::Object* block, std::int32_t offset, std::int32_t length) {
    Probe(block, offset, length);
    std::string bytes(static_cast<std::size_t>(length), '\0');
    Load(block, offset, bytes.data(), length);
    return GiveString(bytes, sdk::Encoding::None);
}

// Exactly `length` bytes are written: a longer string is cut, a shorter one filled up with zeros.
void SetStringValue(sdk::Object* block, std::int32_t offset, std::int32_t length, sdk::String* value) {
    Probe(block, offset, length);
    std::string bytes(Bytes(value).substr(0, static_cast<std::size_t>(length)));
    bytes.resize(static_cast<std::size_t>(length));
    Store(block, offset, bytes.data(), length);
}

// The bytes up to the next zero byte; up to the end where there is none.
sdk::String* CString(sdk::Object* block, std::int32_t offset) {
    const MemoryBlockData& data = Data(block);
    if (!InRange(data, offset, 1)) FailRange(data, offset, 1);
    std::string bytes;
    for (std::int64_t at = offset; IsForeign(data) || at < data.size; ++at) {
        char byte = 0;
        Load(block, at, &byte, 1);
        if (byte == 0) break;
        bytes.push_back(byte);
    }
    return GiveString(bytes, sdk::Encoding::None);
}

void SetCString(sdk::Object* block, std::int32_t offset, sdk::String* value) {
    std::string bytes(Bytes(value));
    bytes.push_back('\0');
    Store(block, offset, bytes.data(), static_cast<std::int64_t>(bytes.size()));
}

// --- Parts ----------------------------------------------------------------------------------

// A part of the block as a new block; what lies outside is left out.
sdk::Object* Part(sdk::Object* block, std::int64_t offset, std::int64_t length) {
    const MemoryBlockData& data = Data(block);
    std::int64_t from = std::max<std::int64_t>(offset, 0), to = offset + length;
    if (!IsForeign(data)) to = std::min(to, data.size);
    const std::int64_t count = std::max<std::int64_t>(to - from, 0);
    if (count > 0) Probe(block, from, count);
    Ref<Object> part = NewMemoryBlock(count);
    if (!part) throw std::bad_alloc();
    if (count > 0) Load(block, from, Data(part.get()).bytes, count);
    return part.Detach();
}

sdk::Object* LeftB(sdk::Object* block, std::int32_t length) { return Part(block, 0, length); }

sdk::Object* MidB(sdk::Object* block, std::int32_t offset, std::int32_t length) { return Part(block, offset, length); }

sdk::Object* RightB(sdk::Object* block, std::int32_t length) {
    const MemoryBlockData& data = Data(block);
    if (IsForeign(data)) Fail(kDataRaises.noEnd());
    return Part(block, std::max<std::int64_t>(data.size - std::max(length, 0), 0), data.size);
}

// --- Conversions ----------------------------------------------------------------------------

Value BlockToString(const Value& block) {
    if (!block.object()) return Value(Ref<String>());
    const std::span<const std::uint8_t> bytes = BytesOfMemoryBlock(block.object());
    if (IsForeign(Data(block.object()))) Runtime::Get().Raise(kDataRaises.noString());
    return Value(MakeString({reinterpret_cast<const char*>(bytes.data()), bytes.size()}, sdk::Encoding::None));
}

Value StringToBlock(const Value& string) {
    Ref<Object> block = NewMemoryBlock(string.text());
    if (!block) throw std::bad_alloc();
    return Value(std::move(block));
}

// Nil where there can't be one.
sdk::Object* NewMemoryBlockFunction(std::int32_t size) { return NewMemoryBlock(std::int64_t{size}).Detach(); }

}  // namespace

// --- For the host ---------------------------------------------------------------------------

Ref<Object> NewMemoryBlock(std::int64_t size) {
    if (size < 0 || size > INT32_MAX) return nullptr;
    try {
        Ref<Object> block = NewInstanceOf(definition);
        Resize(Data(block.get()), size);
        return block;
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

Ref<Object> NewMemoryBlock(std::string_view bytes) {
    Ref<Object> block = NewMemoryBlock(static_cast<std::int64_t>(bytes.size()));
    if (block && !bytes.empty()) std::memcpy(Data(block.get()).bytes, bytes.data(), bytes.size());
    return block;
}

Ref<Object> NewForeignMemoryBlock(std::uint8_t* bytes) {
    return NewForeignMemoryBlock(bytes, Runtime::Get().ClassNamed(definition.name));
}

Ref<Object> NewForeignMemoryBlock(std::uint8_t* bytes, const Class& type) {
    if (!bytes) return nullptr;
    Ref<Object> block = NewObject(type);
    if (!block) return nullptr;
    Data(block.get()).bytes = bytes;
    Data(block.get()).size = -1;
    return block;
}

std::uint8_t* PinMemoryBlock(sdk::Object* block) {
    if (!IsInstance(block, definition)) return nullptr;
    Data(block).pinned = true;
    return Data(block).bytes;
}

std::span<std::uint8_t> BytesOfMemoryBlock(sdk::Object* block) {
    if (!IsInstance(block, definition) || Data(block).size <= 0) return {};
    return {Data(block).bytes, static_cast<std::size_t>(Data(block).size)};
}

void RegisterMemoryBlock(Runtime& runtime) {
    static const sdk::MethodRecord functions[] = {
        sdk::SharedMethod<"NewMemoryBlock(size as integer) as MemoryBlock", Guarded<&NewMemoryBlockFunction>>(
            sdk::kMemberPortable),
    };
    static const sdk::MethodRecord methods[] = {
        sdk::Method<"Constructor(size as integer)", Guarded<&Construct>>(sdk::kMemberPortable),
        NumberMethod<"Byte(offset as integer) as integer", std::uint8_t, std::int32_t>(),
        NumberMethod<"Int8Value(offset as integer) as integer", std::int8_t, std::int32_t>(),
        NumberMethod<"UInt8Value(offset as integer) as uint8", std::uint8_t, std::uint8_t>(),
        NumberMethod<"Short(offset as integer) as integer", std::int16_t, std::int32_t>(),
        NumberMethod<"UShort(offset as integer) as integer", std::uint16_t, std::int32_t>(),
        NumberMethod<"Int16Value(offset as integer) as integer", std::int16_t, std::int32_t>(),
        NumberMethod<"UInt16Value(offset as integer) as integer", std::uint16_t, std::int32_t>(),
        NumberMethod<"Long(offset as integer) as integer", std::int32_t, std::int32_t>(),
        NumberMethod<"Int32Value(offset as integer) as integer", std::int32_t, std::int32_t>(),
        NumberMethod<"UInt32Value(offset as integer) as uint32", std::uint32_t, std::uint32_t>(),
        NumberMethod<"Int64Value(offset as integer) as int64", std::int64_t, std::int64_t>(),
        NumberMethod<"SingleValue(offset as integer) as single", float, float>(),
        NumberMethod<"DoubleValue(offset as integer) as double", double, double>(),
        sdk::AssignableMethod<"BooleanValue(offset as integer) as boolean", Guarded<&GetBoolean>, Guarded<&SetBoolean>>(
            sdk::kMemberPortable),
        sdk::AssignableMethod<"StringValue(offset as integer, length as integer) as string", Guarded<&StringValue>,
                              Guarded<&SetStringValue>>(sdk::kMemberPortable),
        sdk::AssignableMethod<"CString(offset as integer) as string", Guarded<&CString>, Guarded<&SetCString>>(
            sdk::kMemberPortable),
        sdk::Method<"LeftB(length as integer) as MemoryBlock", Guarded<&LeftB>>(sdk::kMemberPortable),
        sdk::Method<"MidB(offset as integer, length as integer) as MemoryBlock", Guarded<&MidB>>(sdk::kMemberPortable),
        sdk::Method<"RightB(length as integer) as MemoryBlock", Guarded<&RightB>>(sdk::kMemberPortable),
    };
    static const sdk::PropertyRecord properties[] = {
        ReadWrite<"Integer", &Size, &SetSize>("Size"),
        ReadWrite<"Boolean", &LittleEndian, &SetLittleEndian>("LittleEndian"),
    };
    definition.destructor = &Destroy;
    SetMethods(definition, methods);
    SetProperties(definition, properties);
    RegisterOrAbort(runtime, definition);
    runtime.RegisterFunctions(functions);
    runtime.AddConversion({TypeNamed("MemoryBlock"), TypeNamed("String"), &BlockToString});
    runtime.AddConversion({TypeNamed("String"), TypeNamed("MemoryBlock"), &StringToBlock});
    runtime.Bind<sdk::knewMemoryBlock>([](std::int64_t size) -> sdk::Object* { return NewMemoryBlock(size).Detach(); });
    runtime.Bind<sdk::kmemoryBlockGetPtr>(&PinMemoryBlock);
    runtime.Bind<sdk::kPtrToMemoryBlock>(
        [](std::uint8_t* bytes) -> sdk::Object* { return NewForeignMemoryBlock(bytes).Detach(); });
}

}  // namespace host
