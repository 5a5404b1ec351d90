// The classes TextEncoding and Encodings, and the functions that change a text's encoding.
//
// A string is ASCII, UTF-8, UTF-16 or UTF-32 text, or bytes. Text that is defined to be of another
// encoding becomes UTF-8 at once; text that is converted to another is bytes from then on.
#pragma once

#include "host/objects/Object.h"
#include "host/objects/String.h"

namespace host {

class Runtime;

// A string's bytes as text of an encoding; with nil for one, the bytes by themselves.
Ref<String> DefineAs(const Ref<String>& bytes, sdk::Object* encoding);

void RegisterTextEncodings(Runtime& runtime);

}  // namespace host
