// Pictures in scratch files, and what the process holds of a file.
#pragma once

#include <string>

#include "tests/support/PluginFixture.h"

namespace support {

// A page, and with that the step of row sizes and windows of mapped pictures.
inline constexpr int kPage = 4096;

// The least that a window is asked for, in bytes: a page of pages. A picture of fewer bytes has
// all its rows in one window.
inline constexpr int kLeastWindow = kPage * kPage;

// Pixels of one byte that make five rows exceed the least window, so that a window holds exactly
// five rows.
inline constexpr int kFiveRowWidth = kLeastWindow / 5 + kPage;

Ref<Object> FolderItemOf(const std::string& path);

// A picture over a file of this path, valid or not.
Ref<Object> NewMapped(const std::string& path, int width, int height, int format, int blockSize = 0);

// How many descriptors of this process are of the file that was opened by this path, deleted or
// not; and how many of its memory mappings are.
int OpenDescriptorsOf(const std::string& path);
int MappingsOf(const std::string& path);

// Bytes of a file, read and written past the pictures. Reading beyond the end gives fewer.
Bytes ReadFile(const std::string& path, std::int64_t position, std::size_t count);
void WriteFile(const std::string& path, std::int64_t position, const Bytes& bytes);

}  // namespace support
