// Every member of PictureTQX that reads or writes pixels, as a table: for tests that hold for all
// of them.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "tests/support/PluginFixture.h"

namespace support {

// What an operation works on. All are valid pictures but for `destination`, which may be nil.
struct Pictures {
    Ref<Object> self;
    Ref<Object> other;         // what self is scaled, copied or sharpened from
    Ref<Object> destination;   // what self is filtered or turned into
    Ref<Object> intermediate;  // of ImageFormatScaling, at least self's width and other's height
};

// What operations gave back, as bytes that can be compared between runs.
class Outcome {
  public:
    explicit Outcome(const Pictures& pictures) : pictures_(pictures) {}

    void Add(bool value) { Add(Bytes{static_cast<std::uint8_t>(value)}); }
    void Add(const Bytes& bytes);

    // A picture that a member gave: which of the known ones it is, or else its size, format and
    // pixels. Nil counts too.
    void AddPicture(const Ref<Object>& picture);

    // The colours of a host picture and its mask; nil counts too.
    void AddHostPicture(const Ref<Object>& picture);

    const Bytes& bytes() const { return bytes_; }

  private:
    const Pictures& pictures_;
    Bytes bytes_;
};

struct PictureOperation {
    // The member by its name and number of arguments, "GammaFilter/2"; an assignment ends in "=".
    const char* member;
    void (*run)(const Pictures& pictures, Outcome& outcome);
};

std::span<const PictureOperation> PictureOperations();

// The members of the plug-in's class in that form which have nothing to do with pixels, or make
// the picture.
std::span<const char* const> OtherMembers();

void PrintTo(const PictureOperation& operation, std::ostream* stream);

// "GammaFilter2", for the names of parameterised tests.
std::string OperationName(const PictureOperation& operation);

// The bytes of a picture's pixels, from the first pixel's first byte to the last pixel's last one
// in each row, between pixels of a channel view too.
Bytes PixelBytes(const Ref<Object>& picture);

}  // namespace support
