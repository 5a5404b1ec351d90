// The ten matrices.
#include "plugin/filters/DitherMatrices.h"

#include <iterator>

namespace tqx {

namespace {

// Two blocks on the diagonal and off it: P Q over Q P.
template <std::int32_t Half>
constexpr DitherMatrix Checkered(const std::uint8_t (&p)[Half][Half], const std::uint8_t (&q)[Half][Half]) {
    DitherMatrix matrix{2 * Half, {}};
    for (std::int32_t y = 0; y < Half; ++y)
        for (std::int32_t x = 0; x < Half; ++x) {
            matrix.threshold[y][x] = matrix.threshold[y + Half][x + Half] = p[y][x];
            matrix.threshold[y][x + Half] = matrix.threshold[y + Half][x] = q[y][x];
        }
    return matrix;
}

// clang-format off

constexpr DitherMatrix kMagic2x2 = {2, {{0, 2}, {3, 1}}};

constexpr DitherMatrix kMagic4x4 = {4, {{0, 14, 3, 13}, {11, 5, 8, 6}, {12, 2, 15, 1}, {7, 9, 4, 10}}};

constexpr DitherMatrix kOrdered4x4 = {4, {{0, 8, 2, 10}, {12, 4, 14, 6}, {3, 11, 1, 9}, {15, 7, 13, 5}}};

constexpr DitherMatrix kLines4x4 = {4, {{0, 1, 2, 3}, {4, 5, 6, 7}, {8, 9, 10, 11}, {12, 13, 14, 15}}};

// 25 and 33 come twice, some values not at all: intended.
constexpr DitherMatrix k90Halftone6x6 = {6, {
    {29, 18, 12, 19, 30, 34},
    {17, 7, 4, 8, 20, 28},
    {11, 3, 0, 1, 9, 27},
    {16, 6, 2, 5, 13, 26},
    {25, 15, 10, 14, 21, 31},
    {33, 25, 24, 23, 33, 36},
}};

// Values above size × size never lie below a limit: intended, here and in the next one.
constexpr DitherMatrix kOrdered6x6 = {6, {
    {1, 59, 15, 55, 2, 56},
    {12, 52, 33, 17, 47, 31},
    {34, 18, 44, 28, 9, 49},
    {5, 63, 10, 50, 6, 60},
    {41, 25, 37, 21, 42, 26},
    {38, 22, 3, 57, 13, 53},
}};

constexpr DitherMatrix kOrdered8x8 = {8, {
    {1, 235, 59, 219, 15, 231, 55, 215},
    {2, 232, 56, 216, 12, 228, 52, 212},
    {129, 65, 187, 123, 143, 79, 183, 119},
    {130, 66, 184, 120, 140, 76, 180, 116},
    {33, 193, 17, 251, 47, 207, 31, 247},
    {34, 194, 18, 248, 44, 204, 28, 244},
    {161, 97, 145, 81, 175, 111, 159, 95},
    {162, 98, 146, 82, 172, 108, 156, 92},
}};

constexpr DitherMatrix kCluster3 = Checkered<3>(
    {{9, 11, 10}, {12, 17, 16}, {13, 14, 15}},
    {{8, 6, 7}, {5, 0, 1}, {4, 3, 2}});

constexpr DitherMatrix kCluster4 = Checkered<4>(
    {{18, 20, 19, 16}, {27, 28, 29, 22}, {26, 31, 30, 21}, {23, 25, 24, 17}},
    {{13, 11, 12, 15}, {4, 3, 2, 9}, {5, 0, 1, 10}, {8, 6, 7, 14}});

constexpr DitherMatrix kCluster8 = Checkered<8>(
    {
        {64, 69, 77, 87, 86, 76, 68, 67},
        {70, 94, 100, 109, 108, 99, 93, 75},
        {78, 101, 114, 116, 115, 112, 98, 83},
        {88, 110, 123, 124, 125, 118, 107, 85},
        {89, 111, 122, 127, 126, 117, 106, 84},
        {79, 102, 119, 121, 120, 113, 97, 82},
        {71, 95, 103, 104, 105, 96, 92, 74},
        {65, 72, 80, 90, 91, 81, 73, 66},
    },
    {
        {63, 58, 50, 40, 41, 51, 59, 60},
        {57, 33, 27, 18, 19, 28, 34, 52},
        {49, 26, 13, 11, 12, 15, 29, 44},
        {39, 17, 4, 3, 2, 9, 20, 42},
        {38, 16, 5, 0, 1, 10, 21, 43},
        {48, 25, 8, 6, 7, 14, 30, 45},
        {56, 32, 24, 23, 22, 31, 35, 53},
        {62, 55, 47, 37, 36, 46, 54, 61},
    });

// clang-format on

constexpr const DitherMatrix* kMatrices[] = {&kMagic2x2,   &kMagic4x4,   &kOrdered4x4, &kLines4x4, &k90Halftone6x6,
                                             &kOrdered6x6, &kOrdered8x8, &kCluster3,   &kCluster4, &kCluster8};

}  // namespace

const DitherMatrix* FindDitherMatrix(std::int32_t number) {
    const bool known = number >= 1 && number <= static_cast<std::int32_t>(std::size(kMatrices));
    return known ? kMatrices[number - 1] : nullptr;
}

}  // namespace tqx
