// The class MemoryBlock: bytes that scripts and plug-ins share.
//
// A block owns its bytes, zero-filled when new, or stands for bytes of somebody else whose number
// it does not know (made by PtrToMemoryBlock). Such a block has Size -1; offsets from 0 up are
// tried carefully, and an address without memory raises the same exception as an offset past the
// end.
#pragma once

#include <span>
#include <string_view>

#include "host/objects/Object.h"

namespace host {

class Class;
class Runtime;

// A block of `size` zero bytes; nil when the size is negative or above 2^31 - 1, or when memory
// is short.
Ref<Object> NewMemoryBlock(std::int64_t size);

// A block with a copy of the bytes; nil as above.
Ref<Object> NewMemoryBlock(std::string_view bytes);

// A block around bytes that it does not own; nil for null. `type` is MemoryBlock or inherits from it: one whose
// destructor gives the bytes back to their owner, say.
Ref<Object> NewForeignMemoryBlock(std::uint8_t* bytes);
Ref<Object> NewForeignMemoryBlock(std::uint8_t* bytes, const Class& type);

// A block's first byte; null for nil, for another class's object and for an empty block. The
// address stays readable and writable while the block lives; after a change of Size it is no
// longer the block's content.
std::uint8_t* PinMemoryBlock(sdk::Object* block);

// The bytes of a block that owns them, good until its Size changes; empty for any other.
std::span<std::uint8_t> BytesOfMemoryBlock(sdk::Object* block);

void RegisterMemoryBlock(Runtime& runtime);

}  // namespace host
