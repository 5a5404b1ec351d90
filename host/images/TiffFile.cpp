// The TIFF library's callbacks over the C library's streams.
#include "host/images/TiffFile.h"

#include <sys/stat.h>

#include <cstring>
#include <new>
#include <string_view>

namespace host::codec {

namespace {

std::FILE* StreamOf(thandle_t handle) { return static_cast<std::FILE*>(handle); }

tmsize_t OnRead(thandle_t handle, void* bytes, tmsize_t count) {
    return static_cast<tmsize_t>(std::fread(bytes, 1, static_cast<std::size_t>(count), StreamOf(handle)));
}

tmsize_t OnWrite(thandle_t handle, void* bytes, tmsize_t count) {
    return static_cast<tmsize_t>(std::fwrite(bytes, 1, static_cast<std::size_t>(count), StreamOf(handle)));
}

toff_t OnSeek(thandle_t handle, toff_t offset, int from) {
    if (fseeko(StreamOf(handle), static_cast<off_t>(offset), from) != 0) return static_cast<toff_t>(-1);
    return static_cast<toff_t>(ftello(StreamOf(handle)));
}

// The stream stays its owner's.
int OnClose(thandle_t) { return 0; }

toff_t OnSize(thandle_t handle) {
    std::FILE* stream = StreamOf(handle);
    const off_t position = ftello(stream);
    fseeko(stream, 0, SEEK_END);
    const off_t size = ftello(stream);
    fseeko(stream, position, SEEK_SET);
    return static_cast<toff_t>(size);
}

}  // namespace

TiffFile::TiffFile(std::FILE* stream, const char* mode, std::int64_t mostBytes) {
    TIFFOpenOptions* options = TIFFOpenOptionsAlloc();
    if (!options) throw std::bad_alloc();
    TIFFOpenOptionsSetErrorHandlerExtR(options, OnError, this);
    TIFFOpenOptionsSetWarningHandlerExtR(options, OnWarning, this);
    TIFFOpenOptionsSetMaxSingleMemAlloc(options, static_cast<tmsize_t>(mostBytes));
    tiff_ = TIFFClientOpenExt("", mode, stream, OnRead, OnWrite, OnSeek, OnClose, OnSize, nullptr, nullptr, options);
    TIFFOpenOptionsFree(options);
}

TiffFile::~TiffFile() {
    if (tiff_) TIFFClose(tiff_);
}

void TiffFile::Keep(const char* text) {
    std::snprintf(message_, sizeof message_, "%s", text);
    damaged_ = true;
}

// Even what the library only warns of may be for lack of memory: a tag that it ignores then.
void TiffFile::NoteMemory(std::string_view text) {
    for (const char* words : {"Out of memory", "Insufficient memory", "No space for"})
        shortOfMemory_ |= text.find(words) != std::string_view::npos;
}

int TiffFile::OnError(TIFF*, void* self, const char*, const char* format, va_list arguments) {
    auto* file = static_cast<TiffFile*>(self);
    char text[256];
    std::vsnprintf(text, sizeof text, format, arguments);
    file->NoteMemory(text);
    file->Keep(text);
    return 1;
}

// Of the warnings those of the fax and JPEG decoders tell of data that made no sense. Spare bytes
// between the segments of JPEG data are harmless, and so is a description that was put right.
int TiffFile::OnWarning(TIFF*, void* self, const char* module, const char* format, va_list arguments) {
    auto* file = static_cast<TiffFile*>(self);
    char text[256];
    std::vsnprintf(text, sizeof text, format, arguments);
    file->NoteMemory(text);
    const std::string_view decoder = module ? module : "";
    const bool counts =
        (decoder.starts_with("Fax") || decoder.starts_with("JPEG")) && !decoder.starts_with("JPEGFixup");
    if (counts && !std::strstr(text, "extraneous bytes")) file->Keep(text);
    return 1;
}

}  // namespace host::codec
