// An open file as the stream classes use it: reading and writing with the file's name in every
// error.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>
#include <utility>

#include "host/messages/RaisedMessage.h"

namespace host {

class FileStream {
  public:
    enum class Mode {
        Read,       // must exist
        ReadWrite,  // must exist
        Create,     // read and write; empties an existing file
        CreateNew,  // read and write; must not exist
        Append,     // made when missing; everything is written at the end
    };

    // Opens an ordinary file. Raises IOException.
    FileStream(const std::string& path, Mode mode);

    // Reads from a stream that somebody else opened, and leaves it open.
    FileStream(std::string name, std::FILE* borrowed) : path_(std::move(name)), file_(borrowed), borrowed_(true) {}
    ~FileStream();
    FileStream(const FileStream&) = delete;
    FileStream& operator=(const FileStream&) = delete;

    // Each raises IOException when the system refuses, and after Close.
    std::string Read(std::int64_t count);  // fewer bytes at the end of the file
    std::string ReadAll();
    bool ReadLine(std::string& line);  // without its ending (LF, CR, CRLF); false at the end
    void Write(std::string_view bytes);
    bool AtEnd();
    std::int64_t Position();
    void SetPosition(std::int64_t position);  // below 0 counts as 0; beyond the end is allowed
    std::int64_t Length();
    void SetLength(std::int64_t length);  // below 0 counts as 0

    // Writes what is waiting; raises IOException. A second Close does nothing.
    void Close();

  private:
    enum class Last { None, Read, Write };

    std::FILE* Open() const;
    std::FILE* OpenForWriting() const;
    void Turn(Last next);
    [[noreturn]] void FailSystem(const RaisedMessage& what) const;

    std::string path_;
    std::FILE* file_;
    bool writable_ = false;
    bool borrowed_ = false;
    Last last_ = Last::None;
};

}  // namespace host
