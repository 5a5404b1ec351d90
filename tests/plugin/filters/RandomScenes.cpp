// Random pictures, views and destinations for filters.
#include "tests/plugin/filters/RandomScenes.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <iterator>
#include <limits>

namespace scenes {

using namespace support;

namespace {

int Number(const Ref<Object>& picture, const char* property) { return static_cast<int>(GetInt(picture, property)); }

// Makes the pictures of one scene.
class Maker {
  public:
    Maker(std::uint64_t seed, const Most& most) : random_(seed), most_(most) {}

    Pictures Make() {
        const auto root = NewRoot(AnySize(most_.width), AnySize(most_.height), AnyFormat());
        pictures_.source = ViewsOf(root);
        pictures_.destination = Destination(root);
        return pictures_;
    }

  private:
    int AnySize(int most) { return random_.Between(1, random_.Below(3) == 0 ? std::min(most, 6) : most); }

    // Now and then the one without channels.
    int AnyFormat() { return random_.Below(40) == 0 ? 14 : random_.Between(1, kFormatCount - 1); }

    // Fills the rows, padding included.
    Ref<Object> Filled(const Ref<Object>& picture) {
        for (int y = 0; y < Number(picture, "Height"); ++y) {
            const Bytes bytes = random_.NextBytes(static_cast<std::size_t>(GetInt(picture, "RowSize")));
            std::copy(bytes.begin(), bytes.end(), RowAddress(picture, y));
        }
        pictures_.storage.push_back(picture);
        return picture;
    }

    Ref<Object> NewRoot(int width, int height, int format) {
        switch (random_.Below(5)) {
            case 0:
                return AroundBlock(width, height, format);
            case 1:
                return Filled(New("PictureTQX", New("Picture", width, height, 32), random_.Below(2) == 0));
            default:
                return Filled(New("PictureTQX", width, height, format));
        }
    }

    // Rows of odd lengths, at times so short that they lie over each other.
    Ref<Object> AroundBlock(int width, int height, int format) {
        const int bytes = width * kFormats[format].pixelSize;
        const int rowSize = random_.Below(4) == 0 ? random_.Below(bytes) : bytes + random_.Below(9);
        const int spare = random_.Below(2) == 0 ? 0 : random_.Below(1000);
        block_ = MakeBlock(random_.NextBytes(static_cast<std::size_t>(rowSize * height + bytes + spare)));
        pictures_.storage.push_back(block_);
        return New("PictureTQX", block_, width, height, format, rowSize);
    }

    // Another picture around the block that was made last, if there is one with room for it.
    Ref<Object> AroundTheSameBlock(int width, int height, int format) {
        const int size = block_ ? static_cast<int>(BlockSize(block_)) : 0;
        const int spare = size - width * kFormats[format].pixelSize;
        if (spare < 0) return nullptr;
        return New("PictureTQX", block_, width, height, format, random_.Below(spare / height + 1));
    }

    Ref<Object> ViewsOf(Ref<Object> picture) {
        for (int left = random_.Below(4) == 0 ? 3 : random_.Below(3); left > 0; --left)
            if (const auto view = ViewOf(picture)) picture = view;
        return picture;
    }

    // Nil where the format has no such view.
    Ref<Object> ViewOf(const Ref<Object>& picture) {
        switch (random_.Below(10)) {
            case 0:
            case 1:
            case 2:
            case 3:
                return ClipOf(picture);
            case 4:
            case 5:
                return CallObject(picture, "MirroredView");
            case 6:
                return CallObject(picture, "RGBChannels");
            case 7:
            case 8: {
                const char* const channels[] = {"RedChannel", "GreenChannel", "BlueChannel", "GrayChannel",
                                                "AlphaChannel"};
                return CallObject(picture, channels[random_.Below(5)]);
            }
            default:  // of a clip it lacks rows
                pictures_.storage.push_back(CallObject(picture, "Clone"));
                return pictures_.storage.back();
        }
    }

    Ref<Object> ClipOf(const Ref<Object>& picture) {
        const int width = Number(picture, "Width"), height = Number(picture, "Height");
        const int x = random_.Below(std::min(width, 6)), y = random_.Below(std::min(height, 5));
        const auto size = [&](int most) { return random_.Below(2) == 0 ? most : random_.Between(1, most); };
        const int clippedWidth = size(width - x), clippedHeight = size(height - y);
        return CallObject(picture, "ClipImage", x, y, clippedWidth, clippedHeight);
    }

    Ref<Object> Destination(const Ref<Object>& root) {
        const auto& source = pictures_.source;
        const int width = Number(source, "Width"), height = Number(source, "Height");
        const int format = random_.Below(2) == 0 ? Number(source, "ImageFormat") : AnyFormat();
        switch (random_.Below(8)) {
            case 0:
                return nullptr;
            case 1:
                return source;
            case 2:
                return ViewsOf(root);
            case 3:
                return ViewsOf(source);
            case 4: {
                const auto other = AroundTheSameBlock(width, height, format);
                return other ? ViewsOf(other) : nullptr;
            }
            case 5:
                return ViewsOf(NewRoot(AnySize(most_.width), AnySize(most_.height), AnyFormat()));
            case 6:
                return ViewsOf(NewRoot(width + random_.Below(4), height + random_.Below(4), format));
            default:
                return NewRoot(width, height, format);
        }
    }

    Random random_;
    Most most_;
    Pictures pictures_;
    Ref<Object> block_;
};

}  // namespace

FilterScene RandomScene(std::uint64_t seed, const Most& most) {
    return {"random scene " + std::to_string(seed), [=] { return Maker(seed, most).Make(); }};
}

void ExpectRandomScenes(int count, const std::function<Trial(Random& random)>& draw, const Most& most,
                        const SizeOfResult& sizeOfResult) {
    for (int i = 0; i < count && !::testing::Test::HasFailure(); ++i) {
        const auto seed = static_cast<std::uint64_t>(i);
        Random random(seed + 1'000'000);
        const Trial trial = draw(random);
        ExpectScene(RandomScene(seed, most), trial.filter, trial.reference, sizeOfResult);
    }
}

int AnyInteger(Random& random) {
    const int extremes[] = {0, 1, -1, 254, 255, 256, 65536, -5, 1000, INT_MAX, INT_MIN};
    if (random.Below(2) == 0) return extremes[random.Below(std::size(extremes))];
    return random.Below(2) == 0 ? random.Between(-300, 300) : static_cast<int>(random.Next());
}

double AnyDouble(Random& random) {
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    const double extremes[] = {0,    -0.0,  1,      -1,       0.5,       255,        1e9,
                               -1e9, 1e300, -1e300, 4.9e-324, kInfinity, -kInfinity, std::nan("")};
    if (random.Below(3) == 0) return extremes[random.Below(std::size(extremes))];
    return (random.Below(2000001) - 1000000) / 1e6 * std::pow(10, random.Between(-2, 2));
}

}  // namespace scenes
