// The classes TextInputStream, TextOutputStream and BinaryStream.
#pragma once

namespace host {

class Runtime;

void RegisterTextStreams(Runtime& runtime);
void RegisterBinaryStream(Runtime& runtime);

}  // namespace host
