// The TIFF library over a stream, with its messages kept for the error to come.
#pragma once

#include <tiffio.h>

#include <cstdarg>
#include <cstdio>
#include <string_view>

#include "host/images/Codec.h"

namespace host::codec {

class TiffFile {
  public:
    // `mode` as TIFFOpen takes it. The stream stays the caller's and must outlive the file.
    // `mostBytes` is the largest piece of memory that the library may ask for at once; 0: any.
    TiffFile(std::FILE* stream, const char* mode, std::int64_t mostBytes);
    ~TiffFile();
    TiffFile(const TiffFile&) = delete;
    TiffFile& operator=(const TiffFile&) = delete;

    TIFF* get() const { return tiff_; }

    // The library's last message; empty when there was none.
    const char* message() const { return message_; }

    // The library gives pixels for data that it complained about. Whatever it said since
    // StartPixels, or since the file was opened, that means lost ones is damage.
    void StartPixels() { damaged_ = false; }
    bool IsDamaged() const { return damaged_; }

    // Whether the library ever lacked memory, with which it may go on as if something weren't there.
    bool IsShortOfMemory() const { return shortOfMemory_; }

  private:
    void Keep(const char* text);
    void NoteMemory(std::string_view text);

    static int OnError(TIFF*, void* self, const char* module, const char* format, va_list arguments);
    static int OnWarning(TIFF*, void* self, const char* module, const char* format, va_list arguments);

    char message_[256] = "";
    bool damaged_ = false;
    bool shortOfMemory_ = false;
    TIFF* tiff_;
};

}  // namespace host::codec
