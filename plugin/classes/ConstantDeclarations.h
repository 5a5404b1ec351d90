// Constants as the host wants them: a declaration string that carries the value.
#pragma once

#include <cstdint>
#include <span>

#include "sdk/PluginInterface.h"

namespace tqx {

struct NamedValue {
    const char* name;
    std::int32_t value;
};

// How a value is written and a name begins. This system's classes use the defaults.
struct ConstantStyle {
    bool prefixed = false;  // a "k" before the name
    bool decimal = false;   // decimal whatever the value, with a leading '-' below 0
};

// "Name = 7"; a value that is above 9 as an unsigned number as "Name = &h0000000A", with exactly
// 8 upper-case digits. The text is allocated and never freed: the host keeps its address. Null
// when memory is short.
const char* BuildConstantDeclaration(const NamedValue& constant, ConstantStyle style = {});

// Fills one record a constant, with the value field 0. Both spans have the same length.
void DeclareConstants(std::span<const NamedValue> values, std::span<sdk::ConstantRecord> records);

}  // namespace tqx
