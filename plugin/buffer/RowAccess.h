// Rows and whole pictures as bytes: raw, or converted to and from any format.
//
// A row index is checked against Height and a bad one raises OutOfBoundsException; assigning nil
// raises NilObjectException. Every other refusal is silent: nil from a getter, no change from a
// setter. Converted rows are packed, Width × the format's pixel size; bytes that a conversion
// does not write are 0. Setters take only the whole pixels that the caller's bytes hold. None
// yields to the host.
#pragma once

#include <cstdint>

#include "sdk/PluginInterface.h"

namespace tqx {

// A memory block around the row itself: writes through it change the picture. Good while the
// picture keeps its storage (of mapped storage, its window) where it is.
sdk::Object* RawRow(sdk::Object* self, std::int32_t index);

// A copy of the row's RowSize bytes, padding included; and back.
sdk::Object* GetRow(sdk::Object* self, std::int32_t index);
void SetRow(sdk::Object* self, std::int32_t index, sdk::Object* block);

// The row in a format, as a memory block. With invertAlpha every alpha byte that is copied is
// written as 255 less its value.
sdk::Object* GetRowInFormat(sdk::Object* self, std::int32_t index, std::int32_t format);
void SetRowInFormat(sdk::Object* self, std::int32_t index, std::int32_t format, sdk::Object* block);
sdk::Object* GetRowInFormat(sdk::Object* self, std::int32_t index, std::int32_t format, bool invertAlpha);
void SetRowInFormat(sdk::Object* self, std::int32_t index, std::int32_t format, bool invertAlpha, sdk::Object* block);

// The row in a format, as the bytes of a string.
sdk::String* GetRowStringInFormat(sdk::Object* self, std::int32_t index, std::int32_t format);
void SetRowStringInFormat(sdk::Object* self, std::int32_t index, std::int32_t format, sdk::String* bytes);

// All rows in a format, one after the other, as the bytes of a string. A row that can't be had
// leaves its bytes 0.
sdk::String* GetDataStringInFormat(sdk::Object* self, std::int32_t format);
void SetDataStringInFormat(sdk::Object* self, std::int32_t format, sdk::String* bytes);

}  // namespace tqx
