#include "host/framework/Md5.h"

#include <bit>
#include <cmath>
#include <cstring>
#include <string>

namespace host {

namespace {

constexpr std::size_t kBlock = 64;  // bytes

// How far each of the four rounds rotates, step by step.
constexpr int kRotations[4][4] = {{7, 12, 17, 22}, {5, 9, 14, 20}, {4, 11, 16, 23}, {6, 10, 15, 21}};

// floor(2^32 · |sin(i + 1)|), i in radians.
std::array<std::uint32_t, 64> MakeSines() {
    std::array<std::uint32_t, 64> sines{};
    for (std::size_t i = 0; i < 64; ++i)
        sines[i] = static_cast<std::uint32_t>(std::fabs(std::sin(static_cast<double>(i + 1))) * 4294967296.0);
    return sines;
}

struct State {
    std::uint32_t a = 0x67452301, b = 0xefcdab89, c = 0x98badcfe, d = 0x10325476;
};

// The function of a round and which word of the block its step takes.
std::uint32_t Mix(std::size_t round, const State& s) {
    switch (round) {
        case 0:
            return (s.b & s.c) | (~s.b & s.d);
        case 1:
            return (s.d & s.b) | (~s.d & s.c);
        case 2:
            return s.b ^ s.c ^ s.d;
        default:
            return s.c ^ (s.b | ~s.d);
    }
}

std::size_t WordOf(std::size_t round, std::size_t step) {
    constexpr std::size_t factor[] = {1, 5, 3, 7}, offset[] = {0, 1, 5, 0};
    return (factor[round] * step + offset[round]) % 16;
}

std::uint32_t WordAt(const char* bytes) {
    std::uint8_t b[4];
    std::memcpy(b, bytes, 4);
    return b[0] | std::uint32_t{b[1]} << 8 | std::uint32_t{b[2]} << 16 | std::uint32_t{b[3]} << 24;
}

void Digest(State& state, const char* block) {
    static const std::array<std::uint32_t, 64> sines = MakeSines();
    State s = state;
    for (std::size_t i = 0; i < 64; ++i) {
        const std::size_t round = i / 16;
        const std::uint32_t sum = s.a + Mix(round, s) + sines[i] + WordAt(block + 4 * WordOf(round, i));
        s = {s.d, s.b + std::rotl(sum, kRotations[round][i % 4]), s.b, s.c};
    }
    state = {state.a + s.a, state.b + s.b, state.c + s.c, state.d + s.d};
}

}  // namespace

std::array<std::uint8_t, 16> Md5(std::string_view bytes) {
    State state;
    const std::size_t whole = bytes.size() / kBlock * kBlock;
    for (std::size_t at = 0; at < whole; at += kBlock) Digest(state, bytes.data() + at);
    // The rest, a one bit, zeros and the length in bits.
    std::string tail(bytes.substr(whole));
    tail.push_back(static_cast<char>(0x80));
    while (tail.size() % kBlock != kBlock - 8) tail.push_back('\0');
    const std::uint64_t bits = std::uint64_t{bytes.size()} * 8;
    for (int shift = 0; shift < 64; shift += 8) tail.push_back(static_cast<char>(bits >> shift));
    for (std::size_t at = 0; at < tail.size(); at += kBlock) Digest(state, tail.data() + at);
    std::array<std::uint8_t, 16> digest{};
    const std::uint32_t words[] = {state.a, state.b, state.c, state.d};
    for (std::size_t i = 0; i < 16; ++i) digest[i] = static_cast<std::uint8_t>(words[i / 4] >> 8 * (i % 4));
    return digest;
}

}  // namespace host
