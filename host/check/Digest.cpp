// Walks over what can be seen of a value, byte by byte.
#include "host/check/Digest.h"

#include <cstring>

#include "host/calls/Call.h"
#include "host/calls/HostFunctionSlot.h"
#include "host/calls/Overload.h"
#include "host/calls/Runtime.h"
#include "platform/Worlds.h"

namespace host::check {

namespace {

constexpr std::int32_t kIndexes = 3;      // of assignable methods
constexpr std::int32_t kFillBytes = 200;  // more than a row of the small instances has

// FNV-1a over words of eight bytes, folded so that their upper bytes count below as well; the last
// word is filled up with zeroes.
class Hash {
  public:
    void Add(const void* bytes, std::size_t count) {
        const auto* at = static_cast<const std::uint8_t*>(bytes);
        std::uint64_t word;
        for (; count >= sizeof word; at += sizeof word, count -= sizeof word) {
            std::memcpy(&word, at, sizeof word);
            AddWord(word);
        }
        if (count == 0) return;
        word = 0;
        std::memcpy(&word, at, count);
        AddWord(word);
    }
    void Add(std::int64_t number) { Add(&number, sizeof(number)); }
    void Add(std::string_view text) {
        Add(static_cast<std::int64_t>(text.size()));
        Add(text.data(), text.size());
    }
    std::uint64_t state() const { return state_; }

  private:
    void AddWord(std::uint64_t word) {
        state_ = (state_ ^ word) * 1099511628211U;
        state_ ^= state_ >> 32;
    }

    std::uint64_t state_ = 14695981039346656037U;
};

bool IsText(const Type& type) { return type.kind == Kind::String || SameName(type.className, "MemoryBlock"); }

bool TakesIntegersOnly(const Declaration& declaration) {
    for (const Parameter& parameter : declaration.parameters)
        if (parameter.type.kind != Kind::Integer) return false;
    return !declaration.parameters.empty();
}

void AddValue(Hash& hash, const Value& value, int depth);

void AddBlock(Hash& hash, Object* block) {
    const Property* size = block->type->FindProperty("Size");
    const std::int64_t count = size ? GetProperty(*size, block).ToInt64() : -1;
    hash.Add(count);
    if (count > 0) hash.Add(HostFunctionSlot<sdk::kmemoryBlockGetPtr>::Call(block), static_cast<std::size_t>(count));
}

void AddPicture(Hash& hash, Object* picture) {
    sdk::PictureDescription description{};
    HostFunctionSlot<sdk::klockPictureDescription>::Call(picture, &description);
    const platform::PixMap* pixels = platform::GetGWorldPixMap(description.world);
    if (pixels)
        for (std::int32_t y = 0; y < description.height; ++y)
            hash.Add(pixels->baseAddress + std::ptrdiff_t{y} * pixels->rowBytes,
                     static_cast<std::size_t>(description.width) * static_cast<std::size_t>(pixels->depth / 8));
    HostFunctionSlot<sdk::kunlockPictureDescription>::Call(picture);
}

// The first parameter runs over small indexes, the others are 1 and 2.
void AddAssignable(Hash& hash, const Method& method, Object* self, int depth) {
    for (std::int32_t index = 0; index < kIndexes; ++index)
        for (std::int32_t other = 1; other <= 2; ++other) {
            std::vector<Value> arguments(method.declaration.parameters.size(), Value(other));
            arguments.front() = Value(index);
            AddValue(hash, Invoke(method, self, arguments), depth);
            Runtime::Get().TakeRaised();
        }
}

void AddObject(Hash& hash, Object* object, int depth) {
    hash.Add(object->type->name());
    if (SameName(object->type->name(), "MemoryBlock")) return AddBlock(hash, object);
    if (SameName(object->type->name(), "Picture")) return AddPicture(hash, object);
    for (const Class* type = object->type; type; type = type->superclass()) {
        for (const Property& property : type->properties())
            if (property.readable() && property.type.kind != Kind::Object)
                AddValue(hash, GetProperty(property, object), depth - 1);
        for (const Method& method : type->methods())
            if (method.assignable() && TakesIntegersOnly(method.declaration) && depth > 0)
                AddAssignable(hash, method, object, depth - 1);
    }
}

void AddValue(Hash& hash, const Value& value, int depth) {
    hash.Add(static_cast<std::int64_t>(value.kind()));
    if (value.kind() == Kind::Double || value.kind() == Kind::Single) {
        const double number = value.ToDouble();
        hash.Add(&number, sizeof(number));
    } else if (value.kind() == Kind::String) {
        hash.Add(value.text());
    } else if (value.array()) {
        for (const Value& element : value.array()->values) AddValue(hash, element, depth);
    } else if (value.object()) {
        AddObject(hash, value.object(), depth);
    } else {
        hash.Add(value.ToInt64());
    }
}

// FillScript writes the same bytes.
std::string Pattern(std::int32_t row) {
    std::string bytes;
    for (std::int32_t i = 0; i < kFillBytes; ++i) bytes += static_cast<char>(i * i * 7 + i * 37 + row * 91);
    return bytes;
}

bool TakesRows(const Method& method) {
    return method.assignable() && method.declaration.parameters.size() == 1 && TakesIntegersOnly(method.declaration) &&
           IsText(method.declaration.result);
}

Value PatternAs(const Type& type, std::int32_t seed) {
    const std::string bytes = Pattern(seed);
    if (type.kind == Kind::String) return Value(MakeString(bytes, sdk::Encoding::None));
    auto block = Ref<Object>::Adopt(FromPlugin(HostFunctionSlot<sdk::knewMemoryBlock>::Call(kFillBytes)));
    if (block) std::memcpy(HostFunctionSlot<sdk::kmemoryBlockGetPtr>::Call(block.get()), bytes.data(), bytes.size());
    return Value(std::move(block));
}

}  // namespace

std::uint64_t DigestOf(const Value& value) {
    Hash hash;
    AddValue(hash, value, 2);
    return hash.state();
}

void FillWithBytes(const Ref<Object>& object) {
    for (const Method& method : object->type->methods()) {
        if (!TakesRows(method)) continue;
        for (std::int32_t row = 0; row < kIndexes; ++row) {
            Value argument(row);
            InvokeSetter(method, object.get(), {&argument, 1}, PatternAs(method.declaration.result, row));
            Runtime::Get().TakeRaised();
        }
    }
}

std::string FillScript(const Class& type, const std::string& name) {
    std::string text;
    for (const Method& method : type.methods())
        if (TakesRows(method)) text += "  " + name + "." + method.declaration.name + "(row) = bytes\n";
    if (text.empty()) return "";
    return "For row As Integer = 0 To " + std::to_string(kIndexes - 1) +
           "\n  Dim bytes As String\n  For i As Integer = 0 To " + std::to_string(kFillBytes - 1) +
           "\n    bytes = bytes + ChrB((i * i * 7 + i * 37 + row * 91) Mod 256)\n  Next\n" + text + "Next\n";
}

}  // namespace host::check
