// The coefficients of a progressive JPEG image in a nameless scratch file.
//
// Such an image is known only when its last scan is read; until then the library holds all its
// coefficients, two bytes each, six bytes a pixel. For a large image, which may turn out to be
// damaged in its last byte, that is more memory than a file should cost. Here a window of rows is
// held for each component, and moves down the image with every scan.
#pragma once

#include <memory>
#include <vector>

#include "host/images/Codec.h"
#include "host/images/JpegLibrary.h"

namespace host::codec {

// What the library's virtual arrays are, by its rules: rows of blocks that begin as zeroes, of
// which a few consecutive ones are accessed at a time.
class JpegCoefficients {
  public:
    JpegCoefficients();
    ~JpegCoefficients();
    JpegCoefficients(const JpegCoefficients&) = delete;
    JpegCoefficients& operator=(const JpegCoefficients&) = delete;

    // A new array, owned by this object; null where no file or no memory can be had.
    // `mostRows`: how many are accessed at once.
    jvirt_barray_ptr Request(JDIMENSION blocksAcross, JDIMENSION rows, JDIMENSION mostRows) noexcept;

    // The rows from `first`, good until the next access to the array; null where the file can't be
    // read or written.
    static JBLOCKARRAY Access(jvirt_barray_ptr array, JDIMENSION first, JDIMENSION count, bool writable) noexcept;

  private:
    struct Array;

    bool OpenFile();

    std::vector<std::unique_ptr<Array>> arrays_;
    int file_ = -1;
    std::int64_t end_ = 0;  // bytes of the file that have an array
};

}  // namespace host::codec
