// Copies, scalings and turns within one mapped file of which a window holds five rows: the pixel
// order of the definition, whichever windows source and destination have.
#include <algorithm>
#include <string>
#include <vector>

#include "tests/plugin/buffer/MappedStage.h"
#include "tests/support/Formats.h"

namespace {

using namespace support;

constexpr int kSide = 13;

// A square of gray pixels; `mirrored` counts its rows from the bottom.
struct Square {
    Bytes* bytes;
    bool mirrored;

    std::uint8_t& At(int x, int y) const {
        const int row = mirrored ? kSide - 1 - y : y;
        return (*bytes)[static_cast<std::size_t>(row * kSide + x)];
    }
};

struct View {
    Ref<Object> live;
    Square model;
};

void ReferenceQuarter(const Square& source, const Square& dest, bool left, int block) {
    for (int y0 = 0; y0 < kSide; y0 += block)
        for (int x0 = 0; x0 < kSide; x0 += block)
            for (int y = y0; y < std::min(y0 + block, kSide); ++y)
                for (int x = x0; x < std::min(x0 + block, kSide); ++x)
                    dest.At(left ? y : kSide - 1 - y, left ? kSide - 1 - x : x) = source.At(x, y);
}

void ReferenceHalfTurn(const Square& source, const Square& dest) {
    for (int y = 0; y < kSide; ++y)
        for (int x = 0; x < kSide; ++x) dest.At(x, kSide - 1 - y) = source.At(kSide - 1 - x, y);
}

void ReferenceCopy(const Square& source, const Square& dest, int dx, int dy) {
    for (int y = 0; y + dy < kSide; ++y)
        for (int x = 0; x + dx < kSide; ++x) dest.At(x + dx, y + dy) = source.At(x, y);
}

void ReferenceScale(const Square& source, const Square& dest, int width, int height) {
    const double xstep = static_cast<double>(kSide) / width, ystep = static_cast<double>(kSide) / height;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            dest.At(x, y) = source.At(static_cast<int>(xstep * x), static_cast<int>(ystep * y));
}

class WindowedOrder : public PluginTest {
  protected:
    void SetUp() override {
        PluginTest::SetUp();
        root_ = NewMapped(folder_.path() + "/pixels", kFiveRowWidth, kSide, 11);
        ASSERT_TRUE(GetBool(root_, "Valid"));
        ASSERT_EQ(GetInt(root_, "MappingBlockSize") / GetInt(root_, "RowSize"), 5);
        for (int i = 0; i < 2; ++i)
            views_.push_back({CallObject(root_, "ClipImage", 3, 0, kSide, kSide), {&model_, false}});
        views_.push_back({CallObject(views_[0].live, "MirroredView"), {&model_, true}});
    }

    void TearDown() override {
        views_.clear();
        root_ = nullptr;
        PluginTest::TearDown();
    }

    // Runs both forms for every pair of views and compares the pixels.
    template <class Live, class Model>
    void Check(const std::string& what, const Live& live, const Model& model) {
        for (std::size_t i = 0; i < views_.size(); ++i)
            for (std::size_t j = 0; j < views_.size(); ++j) {
                model_ = Random(7).NextBytes(kSide * kSide);
                Assign(views_[0].live, "DataStringInFormat", {11}, ToValue(model_));
                live(views_[i].live, views_[j].live);
                model(views_[i].model, views_[j].model);
                ASSERT_TRUE(SameBytes(TextBytes(Call(views_[0].live, "DataStringInFormat", 11)), model_, kSide))
                    << what << " from view " << i << " to view " << j;
            }
    }

    mapped::ScratchFolder folder_;
    Ref<Object> root_;
    Bytes model_;
    std::vector<View> views_;
};

TEST_F(WindowedOrder, OfTurns) {
    for (const std::string name : {"Rotate90", "Rotate270", "Rotate90slow", "Rotate270slow"})
        Check(
            name, [&](const auto& source, const auto& dest) { CallObject(source, name, dest); },
            [&](const Square& source, const Square& dest) {
                // Blocks are two rows lower than the windows.
                ReferenceQuarter(source, dest, name.starts_with("Rotate90"), name.ends_with("slow") ? kSide : 3);
            });
    Check(
        "Rotate180", [](const auto& source, const auto& dest) { CallObject(source, "Rotate180", dest); },
        [](const Square& source, const Square& dest) { ReferenceHalfTurn(source, dest); });
}

TEST_F(WindowedOrder, OfCopies) {
    for (const int dx : {0, 1, 5})
        for (const int dy : {0, 1, 6})
            Check(
                "copy by " + std::to_string(dx) + ", " + std::to_string(dy),
                [&](const auto& source, const auto& dest) { Call(dest, "CopyPixels", source, dx, dy, kSide, kSide); },
                [&](const Square& source, const Square& dest) { ReferenceCopy(source, dest, dx, dy); });
}

TEST_F(WindowedOrder, OfFastScaling) {
    for (const int width : {kSide, 5})
        for (const int height : {kSide, 9, 4})
            Check(
                "to " + std::to_string(width) + " x " + std::to_string(height),
                [&](const auto& source, const auto& dest) { CallBool(dest, "ScaleFast", source, width, height); },
                [&](const Square& source, const Square& dest) { ReferenceScale(source, dest, width, height); });
}

}  // namespace
