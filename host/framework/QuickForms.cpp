// The quick forms by the functions that they stand for, and results written over old texts.
#include "host/framework/QuickForms.h"

#include <cstring>
#include <unordered_map>

#include "host/objects/GuardedMemory.h"

namespace host {

namespace {

std::unordered_map<sdk::AnyFunction, QuickForm>& Forms() {
    static std::unordered_map<sdk::AnyFunction, QuickForm> forms;
    return forms;
}

// Texts that were counted keep their marks, and much room is not kept for little text.
bool CanTake(const String* string, std::string_view text) {
    constexpr std::size_t kMostKept = 256;
    if (!string || string->references != 1 || string->marks || text.empty()) return false;
    const std::size_t room = GuardedSize(string) - sizeof(String);
    return room >= text.size() && room <= kMostKept;
}

}  // namespace

void AddQuickForm(sdk::AnyFunction function, QuickForm form) { Forms()[function] = form; }

namespace {

QuickForm FormOf(sdk::AnyFunction function, std::size_t arguments) {
    const auto found = function ? Forms().find(function) : Forms().end();
    return found != Forms().end() && arguments <= kMostQuickArguments ? found->second : nullptr;
}

}  // namespace

QuickForm QuickFormOf(const Method& method) { return FormOf(method.function, method.declaration.parameters.size()); }
QuickForm QuickSetterOf(const Method& method) {
    return FormOf(method.setter, method.declaration.parameters.size() + 1);
}

namespace {

bool IsSharedCharacter(std::string_view bytes, sdk::Encoding encoding) {
    return bytes.size() == 1 && static_cast<signed char>(bytes[0]) > 0 && encoding == sdk::Encoding::Utf8;
}

}  // namespace

Ref<String> TextOfBytes(std::string_view bytes, sdk::Encoding encoding) {
    return IsSharedCharacter(bytes, encoding) ? SharedCharacter(bytes[0]) : MakeString(bytes, encoding);
}

void PutText(Value& value, std::string_view text, sdk::Encoding encoding) {
    String* const own = value.string();
    if (IsSharedCharacter(text, encoding) || !CanTake(own, text)) {
        value = Value(TextOfBytes(text, encoding));
        return;
    }
    std::memmove(const_cast<std::uint8_t*>(own->data), text.data(), text.size());
    own->length = static_cast<std::int64_t>(text.size());
    own->encoding = encoding;
}

}  // namespace host
