// Pictures of one row that is as wide as a row may be. They take gigabytes and seconds, so they are
// only tried where that is asked for.
#include <cstdint>
#include <cstdlib>

#include "tests/support/Formats.h"
#include "tests/support/PluginFixture.h"

namespace {

using namespace support;

constexpr int kGray = 11;
constexpr int kWidest = 2147483584;  // a row of 2^31 bytes is refused

class WidestPictures : public PluginTest {
  protected:
    void SetUp() override {
        if (!std::getenv("TQX_LARGE_TESTS"))
            GTEST_SKIP() << "set TQX_LARGE_TESTS where there are 8 GB of memory to spare";
        PluginTest::SetUp();
    }
    void TearDown() override {
        if (!IsSkipped()) PluginTest::TearDown();
    }
};

TEST_F(WidestPictures, AreScaledIntoToTheLastPixel) {
    const auto widest = New("PictureTQX", kWidest, 1, kGray), small = New("PictureTQX", 2, 1, kGray);
    ASSERT_TRUE(GetBool(widest, "Valid"));
    RowAddress(small, 0)[0] = 7;
    RowAddress(small, 0)[1] = 9;
    ASSERT_TRUE(CallBool(widest, "ScaleFast", small, kWidest, 1));
    const std::uint8_t* const row = RowAddress(widest, 0);
    EXPECT_EQ(row[kWidest / 2 - 1], 7);
    EXPECT_EQ(row[kWidest / 2], 9);
    EXPECT_EQ(row[kWidest - 1], 9);
}

TEST_F(WidestPictures, AreBlurredInPlaceToTheLastPixel) {
    const auto widest = New("PictureTQX", kWidest, 1, kGray);
    ASSERT_TRUE(GetBool(widest, "Valid"));
    RowAddress(widest, 0)[kWidest - 1] = 90;
    ASSERT_TRUE(CallObject(widest, "BoxBlurFilter", widest, 1.0));
    const std::uint8_t* const row = RowAddress(widest, 0);
    EXPECT_EQ(row[kWidest - 3], 0);
    EXPECT_EQ(row[kWidest - 2], 30);
    EXPECT_EQ(row[kWidest - 1], 60);
}

}  // namespace
