// Dithering beside a model, with every matrix and number of levels.
#include <climits>
#include <sstream>

#include "tests/plugin/filters/FilterScenes.h"
#include "tests/plugin/filters/RandomScenes.h"
#include "tests/support/Interpose.h"

namespace {

using namespace support;
using namespace scenes;

using Matrix = std::vector<std::vector<int>>;

// Rows separated by slashes.
Matrix Parse(const std::string& text) {
    Matrix matrix(1);
    std::istringstream words(text);
    for (std::string word; words >> word;)
        if (word == "/")
            matrix.emplace_back();
        else
            matrix.back().push_back(std::stoi(word));
    return matrix;
}

// P Q over Q P.
Matrix Checkered(const std::string& pText, const std::string& qText) {
    const Matrix p = Parse(pText), q = Parse(qText);
    const std::size_t n = p.size();
    Matrix matrix(2 * n, std::vector<int>(2 * n));
    for (std::size_t y = 0; y < 2 * n; ++y)
        for (std::size_t x = 0; x < 2 * n; ++x) matrix[y][x] = ((y < n) == (x < n) ? p : q)[y % n][x % n];
    return matrix;
}

const std::vector<Matrix>& Matrices() {
    static const std::vector<Matrix> matrices = {
        Parse("0 2 / 3 1"),
        Parse("0 14 3 13 / 11 5 8 6 / 12 2 15 1 / 7 9 4 10"),
        Parse("0 8 2 10 / 12 4 14 6 / 3 11 1 9 / 15 7 13 5"),
        Parse("0 1 2 3 / 4 5 6 7 / 8 9 10 11 / 12 13 14 15"),
        Parse("29 18 12 19 30 34 / 17 7 4 8 20 28 / 11 3 0 1 9 27 / 16 6 2 5 13 26 / 25 15 10 14 21 31 / "
              "33 25 24 23 33 36"),
        Parse("1 59 15 55 2 56 / 12 52 33 17 47 31 / 34 18 44 28 9 49 / 5 63 10 50 6 60 / 41 25 37 21 42 26 / "
              "38 22 3 57 13 53"),
        Parse("1 235 59 219 15 231 55 215 / 2 232 56 216 12 228 52 212 / 129 65 187 123 143 79 183 119 / "
              "130 66 184 120 140 76 180 116 / 33 193 17 251 47 207 31 247 / 34 194 18 248 44 204 28 244 / "
              "161 97 145 81 175 111 159 95 / 162 98 146 82 172 108 156 92"),
        Checkered("9 11 10 / 12 17 16 / 13 14 15", "8 6 7 / 5 0 1 / 4 3 2"),
        Checkered("18 20 19 16 / 27 28 29 22 / 26 31 30 21 / 23 25 24 17",
                  "13 11 12 15 / 4 3 2 9 / 5 0 1 10 / 8 6 7 14"),
        Checkered("64 69 77 87 86 76 68 67 / 70 94 100 109 108 99 93 75 / 78 101 114 116 115 112 98 83 / "
                  "88 110 123 124 125 118 107 85 / 89 111 122 127 126 117 106 84 / 79 102 119 121 120 113 97 82 / "
                  "71 95 103 104 105 96 92 74 / 65 72 80 90 91 81 73 66",
                  "63 58 50 40 41 51 59 60 / 57 33 27 18 19 28 34 52 / 49 26 13 11 12 15 29 44 / "
                  "39 17 4 3 2 9 20 42 / 38 16 5 0 1 10 21 43 / 48 25 8 6 7 14 30 45 / 56 32 24 23 22 31 35 53 / "
                  "62 55 47 37 36 46 54 61")};
    return matrices;
}

Reference Walk(int number, int levels) {
    const Matrix& matrix = Matrices()[static_cast<std::size_t>(number - 1)];
    const int n = static_cast<int>(matrix.size());
    return EachPixel([=](int value, Channel, int x, int y) {
        const int cell = matrix[static_cast<std::size_t>(y % n)][static_cast<std::size_t>(x % n)];
        const int base = value * (levels - 1) >> 8;
        const bool below = cell < (value * (n * n + 1) >> 8);
        return (below ? base : base + 1) * 255 / (levels - 1);
    });
}

Filter Dither(int number, int levels) {
    return [=](const auto& picture, const auto& to) { return CallObject(picture, "DitherFilter", to, number, levels); };
}

class Dithering : public PluginTest {};

TEST_F(Dithering, ServesEveryViewSharingAndFormat) {
    ExpectScenes(AllScenes(), Dither(7, 2), Walk(7, 2));
    ExpectScenes(AllScenes(), Dither(5, 6), Walk(5, 6));
}

TEST_F(Dithering, ServesRandomScenes) {
    const auto draw = [](Random& random) {
        const int number = random.Between(1, 10), levels = random.Between(2, random.Below(2) == 0 ? 9 : 256);
        return Trial{Dither(number, levels), Walk(number, levels)};
    };
    ExpectRandomScenes(800, draw, {200, 40});
}

TEST_F(Dithering, TakesEveryMatrixAndNumberOfLevels) {
    for (int number = 1; number <= 10; ++number)
        for (const int levels : {2, 3, 4, 7, 16, 64, 255, 256})
            for (const int format : {11, 12, 1, 2}) {
                SCOPED_TRACE(testing::Message() << number << ", " << levels);
                ExpectScene(Plain(format, 101, 19), Dither(number, levels), Walk(number, levels));
            }
}

TEST_F(Dithering, MatricesAreTheConstants) {
    const char* const names[] = {"DitherMagic2x2Matrix",   "DitherMagic4x4Matrix",      "DitherOrdered4x4Matrix",
                                 "DitherLines4x4Matrix",   "Dither90Halftone6x6Matrix", "DitherOrdered6x6Matrix",
                                 "DitherOrdered8x8Matrix", "DitherCluster3Matrix",      "DitherCluster4Matrix",
                                 "DitherCluster8Matrix"};
    for (int i = 0; i < 10; ++i) EXPECT_EQ(ConstantOf("PictureTQX", names[i]), i + 1);
}

TEST_F(Dithering, TurnsBlackIntoWhiteAndBack) {
    const auto picture = New("PictureTQX", 16, 16, 11);
    const Bytes black(256, 0), white(256, 255);
    for (const int number : {1, 2, 3, 4, 8, 9, 10}) {
        WritePixels(picture, black);
        EXPECT_EQ(ReadPixels(CallObject(picture, "DitherFilter", nullptr, number, 2)), white) << number;
        WritePixels(picture, white);
        EXPECT_EQ(ReadPixels(CallObject(picture, "DitherFilter", nullptr, number, 2)), black) << number;
    }
}

// Entries above the matrix's size never lie below a limit, so white keeps white cells.
TEST_F(Dithering, KeepsLargeThresholds) {
    const auto picture = New("PictureTQX", 8, 8, 11);
    WritePixels(picture, Bytes(64, 255));
    const Bytes result = ReadPixels(CallObject(picture, "DitherFilter", nullptr, 7, 2));
    EXPECT_EQ(result[0], 0);            // 1
    EXPECT_EQ(result[1], 255);          // 235
    EXPECT_EQ(result[32], 0);           // 33
    EXPECT_EQ(result[4 * 8 + 1], 255);  // 193
}

TEST_F(Dithering, MiddleGrayIsAChessboard) {
    const auto picture = New("PictureTQX", 2, 2, 11);
    WritePixels(picture, Bytes(4, 128));
    EXPECT_EQ(ReadPixels(CallObject(picture, "DitherFilter", nullptr, 1, 2)), (Bytes{0, 255, 255, 0}));
}

TEST_F(Dithering, WithAllLevelsMovesTheEnds) {
    const auto picture = New("PictureTQX", 2, 2, 11);
    WritePixels(picture, {0, 0, 255, 255});
    EXPECT_EQ(ReadPixels(CallObject(picture, "DitherFilter", nullptr, 1, 256)), (Bytes{1, 1, 254, 254}));
}

TEST_F(Dithering, TilesAClipFromItsOwnCorner) {
    const auto picture = New("PictureTQX", 9, 9, 1);
    FillRandom(picture, 1);
    const auto clip = CallObject(picture, "ClipImage", 1, 1, 8, 8);
    const auto copy = New("PictureTQX", 8, 8, 1);
    Call(copy, "CopyPixels", clip);
    EXPECT_EQ(ReadPixels(CallObject(clip, "DitherFilter", nullptr, 3, 2)),
              ReadPixels(CallObject(copy, "DitherFilter", nullptr, 3, 2)));
}

TEST_F(Dithering, UnknownMatrixLeavesTheDestination) {
    const auto picture = New("PictureTQX", 4, 4, 1);
    const auto destination = New("PictureTQX", 4, 4, 1);
    FillRandom(destination, 2);
    const Bytes before = ReadPixels(destination);
    for (const int number : {0, 11, -1, INT_MAX, INT_MIN}) {
        EXPECT_EQ(CallObject(picture, "DitherFilter", destination, number, 2), destination);
        EXPECT_EQ(ReadPixels(destination), before);
        EXPECT_EQ(ReadPixels(CallObject(picture, "DitherFilter", nullptr, number, 2)), Bytes(48, 0));
    }
}

TEST_F(Dithering, UnknownMatrixLeavesANewDestinationAsTheFactoryMadeIt) {
    const auto picture = New("PictureTQX", 4, 4, 1);
    Set(picture, "Factory", NewFactory([](int width, int height, int format) {
            const auto made = New("PictureTQX", width, height, format);
            FillRandom(made, 3);
            return made;
        }));
    const auto filled = New("PictureTQX", 4, 4, 1);
    FillRandom(filled, 3);
    for (const int number : {0, 11})
        EXPECT_EQ(ReadPixels(CallObject(picture, "DitherFilter", nullptr, number, 2)), ReadPixels(filled));
}

TEST_F(Dithering, RefusesOtherNumbersOfLevels) {
    const auto picture = New("PictureTQX", 4, 4, 1);
    int made = 0;
    Set(picture, "Factory", NewFactory([&](int, int, int) {
            ++made;
            return Ref<Object>();
        }));
    for (const int levels : {1, 0, -5, 257, 1000, INT_MAX, INT_MIN})
        EXPECT_FALSE(CallObject(picture, "DitherFilter", nullptr, 1, levels)) << levels;
    EXPECT_EQ(made, 0);
    EXPECT_FALSE(CallObject(New("PictureTQX", 4, 4, 0), "DitherFilter", nullptr, 1, 2));
}

}  // namespace
