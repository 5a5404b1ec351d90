// The classes TextInputStream, TextOutputStream, BinaryStream, and the standard streams.
#pragma once

#include <string>

#include "host/framework/FileStream.h"
#include "host/objects/Object.h"

namespace host {

class Runtime;

// UTF-8 text where the bytes are sound as such, else bytes; one reference for the caller.
sdk::String* TextOrBytes(const std::string& bytes);

// Streams of a file. Each raises IOException when it can't be opened.
Ref<Object> OpenTextInput(const std::string& path);
Ref<Object> OpenTextOutput(const std::string& path, FileStream::Mode mode);
Ref<Object> OpenBinary(const std::string& path, FileStream::Mode mode);

void RegisterTextStreams(Runtime& runtime);
void RegisterBinaryStream(Runtime& runtime);
void RegisterStandardStreams(Runtime& runtime);

}  // namespace host
