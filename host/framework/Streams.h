// The classes TextInputStream, TextOutputStream, BinaryStream, and the standard streams.
#pragma once

#include <string>

#include "sdk/PluginInterface.h"

namespace host {

class Runtime;

// UTF-8 text where the bytes are sound as such, else bytes; one reference for the caller.
sdk::String* TextOrBytes(const std::string& bytes);

void RegisterTextStreams(Runtime& runtime);
void RegisterBinaryStream(Runtime& runtime);
void RegisterStandardStreams(Runtime& runtime);

}  // namespace host
