// The passes of a rotation through whatever pictures a factory gives: of other sizes and layouts,
// views, the turned picture itself, one for two passes.
#include <cmath>

#include "tests/support/Scene.h"
#include "tests/support/TrueValues.h"

namespace {

using namespace support;

constexpr int kChannels = 5;

// Backgrounds and offsets by channel: red, green, blue, alpha, gray.
using Background = std::array<int, kChannels>;

std::array<int, kChannels> OffsetsOf(const ModelPicture& p) { return {p.red, p.green, p.blue, p.alpha, p.gray}; }

std::uint8_t Byte(double value) { return static_cast<std::uint8_t>(static_cast<int>(value)); }

// What the driver of a picture's layout shears.
std::vector<std::size_t> ShearedOf(const ModelPicture& p) {
    if (p.isGray) return {4};
    return p.hasAlpha ? std::vector<std::size_t>{0, 1, 2, 3} : std::vector<std::size_t>{0, 1, 2};
}

// A pixel's values in the sheared channels.
using Values8 = std::vector<std::uint8_t>;

class Skewer {
  public:
    Skewer(const std::vector<std::size_t>& sheared, const Background& background) : sheared_(sheared) {
        for (const std::size_t c : sheared) background_.push_back(static_cast<std::uint8_t>(background[c]));
    }

    void Row(const ModelPicture& from, const ModelPicture& to, int y, double position) {
        if (y >= to.height || !to.Row(y)) return;
        for (int x = 0; x < to.width; ++x) Store(to, x, y, background_);
        if (y >= from.height || !from.Row(y)) return;
        Start(position);
        for (int i = 0; i < from.width; ++i) Store(to, offset_ + i, y, Moved(Load(from, i, y)));
        Store(to, offset_ + from.width, y, End());
    }

    void Column(const ModelPicture& from, const ModelPicture& to, int x, double position) {
        for (int y = 0; y < to.height; ++y) Store(to, x, y, background_);
        Start(position);
        for (int i = 0; i < from.height; ++i)
            if (from.Row(i)) Store(to, x, offset_ + i, Moved(Load(from, x, i)));
        // On the last pixel, not after it.
        if (from.Row(from.height - 1)) Store(to, x, offset_ + from.height - 1, End());
    }

  private:
    void Start(double position) {
        weight_ = position - std::floor(position);
        offset_ = static_cast<std::int64_t>(std::floor(position));
        previous_.clear();
        for (const std::uint8_t value : background_) previous_.push_back(Byte(weight_ * value));
    }

    Values8 Moved(const Values8& values) {
        Values8 moved;
        for (std::size_t c = 0; c < values.size(); ++c) {
            const std::uint8_t left = Byte(weight_ * values[c]);
            moved.push_back(static_cast<std::uint8_t>(values[c] - (left - previous_[c])));
            previous_[c] = left;
        }
        return moved;
    }

    Values8 End() const {
        Values8 end;
        for (std::size_t c = 0; c < background_.size(); ++c)
            end.push_back(Byte(background_[c] - (weight_ * background_[c] - previous_[c])));
        return end;
    }

    Values8 Load(const ModelPicture& p, std::int64_t x, std::int64_t y) const {
        Values8 values;
        for (const std::size_t c : sheared_) values.push_back(p.Pixel(x, y)[OffsetsOf(p)[c]]);
        return values;
    }

    void Store(const ModelPicture& p, std::int64_t x, std::int64_t y, const Values8& values) const {
        if (x < 0 || x >= p.width || y < 0 || y >= p.height || !p.Row(y)) return;
        for (std::size_t c = 0; c < sheared_.size(); ++c) p.Pixel(x, y)[OffsetsOf(p)[sheared_[c]]] = values[c];
    }

    std::vector<std::size_t> sheared_;
    Values8 background_;
    Values8 previous_;
    double weight_ = 0;
    std::int64_t offset_ = 0;
};

// The three passes into these pictures; gives the sizes that were asked for.
std::string Shear(const ModelPicture& p, const std::vector<Twin>& passes, double angle, const Background& background) {
    const double theta = angle * 3.141592653589793 / 180;
    const double s = TrueSin(theta), t = TrueTan(theta * 0.5), c = TrueCos(theta);
    const int width = p.width, height = p.height;
    const ModelPicture &a = passes[0].model, &b = passes[1].model, &z = passes[2].model;
    Skewer skewer(ShearedOf(p), background);
    for (int y = 0; y < height; ++y) skewer.Row(p, a, y, t * ((t >= 0 ? y : y - height) + 0.5));
    double o = s <= 0 ? -s * (width - a.width) : s * (width - 1);
    for (int x = 0; x < a.width; ++x, o = o - s) skewer.Column(a, b, x, o);
    const int rows = static_cast<int>(width * std::abs(s) + height * c) + 1;
    o = s < 0 ? t * (-s * (width - 1) + 1 - rows) : s * (width - 1) * -t;
    for (int u = 0; u < rows; ++u, o = o + t) skewer.Row(b, z, u, o);
    const auto size = [](int w, int h) { return std::to_string(w) + "x" + std::to_string(h) + " "; };
    return size(width + static_cast<int>(height * std::abs(t)), height) +
           size(a.width, static_cast<int>(height * c + width * std::abs(s)) + 1) +
           size(static_cast<int>(height * std::abs(s) + width * c) + 1, rows);
}

class RotatePasses : public PluginTest {
  protected:
    // A picture for a pass, often one that shares memory with another.
    static Twin PassFor(Scene& scene, const Twin& turned, const std::vector<Twin>& before, int width, int height,
                        int format) {
        Random& random = scene.random();
        const Twin& known = before.empty() || random.Below(2) == 0 ? turned : before.back();
        const int any = random.Between(1, 13), w = std::max(1, width + random.Between(-3, 3)),
                  h = std::max(1, height + random.Between(-3, 3));
        switch (random.Below(7)) {
            case 0:
                return known;
            case 1:
                return scene.View(known, "MirroredView");
            case 2:
                return scene.View(known, "ClipImage", 0, std::min(1, known.model.height - 1),
                                  std::max(1, known.model.width - 1), std::max(1, known.model.height - 1));
            case 3:
                return scene.Kind(random.Below(9), w, h, any);
            case 4:
                return scene.Kind(random.Below(9), w, h, format);
            default:
                return scene.Memory(width, height, format);
        }
    }
};

TEST_F(RotatePasses, ShearIntoWhateverPicturesAFactoryGives) {
    for (std::uint64_t seed = 0; seed < 500; ++seed) {
        Scene scene(seed);
        Random& random = scene.random();
        const int format = random.Below(2) == 0 ? random.Between(1, 13) : random.Between(15, 21);
        const Twin turned = scene.Kind(random.Below(9), random.Between(2, 50), random.Between(2, 40), format);
        const double angle = (random.Below(2) == 0 ? 0.001 : 315.001) + random.Below(44998) / 1000.0;
        std::vector<Twin> passes;
        std::string asked;
        const auto factory = NewFactory([&](int width, int height, int code) {
            asked += std::to_string(width) + "x" + std::to_string(height) + " ";
            passes.push_back(PassFor(scene, turned, passes, width, height, code));
            return passes.back().live;
        });
        Background background;
        for (int& value : background) value = random.Between(-300, 600);
        Set(turned.live, "Factory", Value(factory));
        const auto [red, green, blue, alpha, gray] = background;
        const auto rotated = CallObject(turned.live, "Rotate", angle, red, green, blue, alpha, gray);
        Set(turned.live, "Factory", Value(nullptr));
        ASSERT_EQ(passes.size(), 3u) << "seed " << seed;
        EXPECT_EQ(rotated, passes[2].live);
        EXPECT_EQ(asked, Shear(turned.model, passes, angle, background));
        ASSERT_TRUE(scene.Same()) << "seed " << seed << ", " << angle << " degrees";
    }
}

}  // namespace
