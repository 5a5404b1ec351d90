// Formats that are recognised but not read yet.
#include "host/images/Codec.h"

namespace host::codec {

DecoderPointer OpenTiff(Input) { FailFormat("is a TIFF file, which can't be read yet"); }
DecoderPointer OpenWebP(Input) { FailFormat("is a WebP file, which can't be read yet"); }
DecoderPointer OpenGif(Input) { FailFormat("is a GIF file, which can't be read yet"); }
EncoderPointer CreateTiff(const Output&) { FailFile("TIFF files can't be written yet"); }
EncoderPointer CreateWebP(const Output&) { FailFile("WebP files can't be written yet"); }

}  // namespace host::codec
