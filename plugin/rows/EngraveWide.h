// Engraving in registers, for Engrave.cpp.

namespace rows::ROWS_LEVEL {

namespace {

// With 128 taken off both, the difference of signed bytes is cut off at -128 and 127, which is
// where 0 and 255 are with 128 added.
void EngraveRow(const std::uint8_t* pixels, const std::uint8_t* others, std::int64_t count, std::uint8_t* result) {
    const Register middle = Bytes(128);
    for (std::int64_t at = 0; at < count; at += kBytes) {
        const Register pixel = Xor(LoadPart(pixels + at, count - at), middle);
        const Register other = Xor(LoadPart(others + at, count - at), middle);
        StorePart(result + at, Xor(SubSignedBytesCapped(pixel, other), middle), count - at);
    }
}

}  // namespace

}  // namespace rows::ROWS_LEVEL
