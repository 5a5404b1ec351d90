// Changes PNG files and mends their check sums, without which nearly every change would end at the
// first of them.
#include <zlib.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t most);

namespace {

constexpr std::size_t kSignatureBytes = 8;
constexpr std::size_t kChunkBytes = 12;  // length, name, check sum

std::uint32_t Big(const std::uint8_t* bytes) {
    return std::uint32_t{bytes[0]} << 24 | std::uint32_t{bytes[1]} << 16 | std::uint32_t{bytes[2]} << 8 | bytes[3];
}

void MendCheckSums(std::uint8_t* data, std::size_t size) {
    for (std::size_t at = kSignatureBytes; at + kChunkBytes <= size;) {
        const std::size_t length = Big(data + at);
        if (length > size - at - kChunkBytes) return;
        const auto sum = static_cast<std::uint32_t>(crc32(0, data + at + 4, static_cast<uInt>(length + 4)));
        for (int i = 0; i < 4; ++i) data[at + 8 + length + i] = static_cast<std::uint8_t>(sum >> (24 - 8 * i));
        at += kChunkBytes + length;
    }
}

}  // namespace

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t most, unsigned seed) {
    size = LLVMFuzzerMutate(data, size, most);
    // Now and then a wrong one is wanted.
    if (seed % 16 != 0) MendCheckSums(data, size);
    return size;
}
