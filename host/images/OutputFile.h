// A file that takes its name when it is complete.
#pragma once

#include <cstdio>
#include <string>
#include <vector>

#include "platform/ScratchFiles.h"

namespace host::codec {

// What is written goes to a file of a temporary name in the folder of the wanted one; that name is
// kept among the scratch files until the file has its own. All functions throw CodecError of the
// kind File.
class OutputFile {
  public:
    // Refuses a path that leads to something other than a file, to a file that is read-only, or
    // into a folder that takes no new file. A symbolic link is followed, also to a file that
    // doesn't exist yet.
    explicit OutputFile(const std::string& path);

    // Without Complete, removes what was written.
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    // For writing, reading back and positioning. After a call that the system refused, every
    // write fails too.
    std::FILE* stream() const { return stream_; }

    // Fails with the system's reason if any call was refused, even one whose result was ignored.
    void Check() const;

    // Writes what is still buffered, closes the file and gives it its name, in the place of an
    // older file of that name. Permissions and, where the system allows it, owner and group are
    // those of the older file, or what any new file gets.
    void Complete();

  private:
    void MakeTemporary();
    void OpenStream();
    void Close();

    static ssize_t OnRead(void* self, char* bytes, std::size_t count);
    static ssize_t OnWrite(void* self, const char* bytes, std::size_t count);
    static int OnSeek(void* self, off64_t* place, int from);

    std::string target_;     // the path with symbolic links followed
    std::string temporary_;  // empty when there is none
    platform::ScratchName kept_;
    std::vector<char> buffer_;  // of the stream
    std::FILE* stream_ = nullptr;
    int file_ = -1;
    int error_ = 0;  // of the first call that failed
};

}  // namespace host::codec
