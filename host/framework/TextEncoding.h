// The classes TextEncoding and Encodings, and the functions that change a text's encoding.
//
// A string is ASCII, UTF-8, UTF-16 or UTF-32 text, or bytes. Text that is defined to be of another
// encoding becomes UTF-8 at once; text that is converted to another is bytes from then on.
#pragma once

namespace host {

class Runtime;

void RegisterTextEncodings(Runtime& runtime);

}  // namespace host
