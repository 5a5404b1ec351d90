// Image files from and to any object that offers its rows by name, a row at a time.
//
// What such an object has: properties Width, Height and, if it likes, HasAlpha and IsGray; a
// method RowInFormat(row, format) that gives a row as a memory block and can be assigned to; and
// constants ImageFormatRGB, ImageFormatRGBA, ImageFormatG and ImageFormatGA. No image is held
// but for files that can't be read in the order of their rows (ImageReader.h).
#pragma once

#include <string>

#include "host/images/ImageWriter.h"
#include "host/objects/Object.h"

namespace host {

// Fills an object of the file's size. A file of colours without alpha makes the object opaque
// where it has alpha. The limit on pixels is raised to the object's own size. Raises, also what
// the object's members raise; rows before that are filled. Throws ImageError.
void ReadFileInto(const std::string& path, Object* picture);

// Writes an object's rows. Raises as above, and when a row can't be had; the file is then left as
// it was. Throws ImageError.
void WriteFileFrom(const std::string& path, Object* picture, const ImageWriteOptions& options);

}  // namespace host
