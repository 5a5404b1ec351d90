// Declaration strings, each in memory that is never given back: the host keeps them.
#include "plugin/classes/ConstantDeclarations.h"

#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace tqx {

namespace {

// " = ", a sign and 10 digits, the closing zero byte, and a prefix. Hexadecimal takes 1 less.
constexpr std::size_t kRoomBesideName = 16;

}  // namespace

const char* BuildConstantDeclaration(const NamedValue& constant, ConstantStyle style) {
    const std::size_t size = std::strlen(constant.name) + kRoomBesideName;
    auto* const text = static_cast<char*>(std::malloc(size));
    if (!text) return nullptr;
    const char* const prefix = style.prefixed ? "k" : "";
    const auto bits = static_cast<std::uint32_t>(constant.value);
    if (style.decimal || bits <= 9)
        std::snprintf(text, size, "%s%s = %" PRId32, prefix, constant.name, constant.value);
    else
        std::snprintf(text, size, "%s%s = &h%08" PRIX32, prefix, constant.name, bits);
    return text;
}

void DeclareConstants(std::span<const NamedValue> values, std::span<sdk::ConstantRecord> records) {
    for (std::size_t i = 0; i < values.size(); ++i) records[i] = {BuildConstantDeclaration(values[i]), nullptr, 0};
}

}  // namespace tqx
