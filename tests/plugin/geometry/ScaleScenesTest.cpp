// Filtered scaling between views of every kind, with and without shared memory, and through
// intermediates of any size.
#include <algorithm>
#include <cmath>
#include <cstring>

#include "tests/plugin/geometry/ScaleReference.h"
#include "tests/support/Scene.h"

namespace {

using namespace support;
using scale_test::List;
using scale_test::Slots;

constexpr int kScaling = 14;

double Clamp(double value) {
    if (std::isnan(value) || value < 0) return 0;
    return value > 255 ? 255 : value;
}

// Which slots a pair of pictures uses, and where they go in self.
struct Path {
    bool luma = false, alpha = false;
    std::vector<std::size_t> slots;
    std::vector<std::pair<std::size_t, int>> writes;
};

Path PathOf(const ModelPicture& source, const ModelPicture& self) {
    Path path;
    path.alpha = source.hasAlpha && self.hasAlpha && source.isRGB >= self.isRGB;
    path.luma = source.isRGB && self.isGray;
    if (source.isRGB && self.isRGB) {
        path.slots = {0, 1, 2};
        path.writes = {{0, self.red}, {1, self.green}, {2, self.blue}};
    } else {
        path.slots = {1};
        path.writes = {{1, self.red}, {1, self.green}, {1, self.blue}};
        if (source.isGray && self.isGray) path.writes = {{1, self.gray}};
    }
    if (path.alpha) {
        path.slots.push_back(3);
        path.writes.push_back({3, self.alpha});
    }
    return path;
}

double Sample(const ModelPicture& source, const Path& path, std::size_t slot, int x, int y) {
    const std::uint8_t* const pixel = source.Pixel(x, y);
    if (slot == 3) return pixel[source.alpha];
    if (source.isGray) return pixel[source.gray];
    if (path.luma) return 0.3 * pixel[source.red] + 0.59 * pixel[source.green] + 0.11 * pixel[source.blue];
    return pixel[slot == 0 ? source.red : slot == 1 ? source.green : source.blue];
}

Slots ReadSlots(const ModelPicture& middle, int x, int y) {
    Slots slots;
    std::memcpy(&slots, middle.Pixel(x, y), sizeof(slots));
    return slots;
}

void PassAcross(const ModelPicture& source, const Path& path, const ModelPicture& middle, int mode, int width) {
    const std::vector<List> lists = scale_test::ListsOf(mode, source.width, width, true);
    for (int y = 0; y < std::min(source.height, middle.height); ++y)
        for (int x = 0; x < std::min(width, middle.width) && source.Row(y) && middle.Row(y); ++x) {
            const List& list = lists[static_cast<std::size_t>(x)];
            Slots slots = ReadSlots(middle, x, y);
            if (path.alpha && source.isGray) slots = {};
            for (const std::size_t slot : path.slots) {
                double sum = 0;
                for (const auto& entry : list.entries) sum += entry.weight * Sample(source, path, slot, entry.index, y);
                slots[slot] = static_cast<float>(Clamp(sum / list.total));
            }
            std::memcpy(middle.Pixel(x, y), &slots, sizeof(slots));
        }
}

void PassDown(const ModelPicture& middle, const Path& path, const ModelPicture& self, int mode, int from, int width,
              int height) {
    const std::vector<List> lists = scale_test::ListsOf(mode, from, height, false);
    for (int y = 0; y < std::min(height, self.height); ++y)
        for (int x = 0; x < std::min(width, self.width) && self.Row(y); ++x) {
            const List& list = lists[static_cast<std::size_t>(y)];
            double sums[4] = {};
            for (const auto& entry : list.entries) {
                if (x >= middle.width || entry.index >= middle.height || !middle.Row(entry.index)) continue;
                const Slots slots = ReadSlots(middle, x, entry.index);
                for (std::size_t slot = 0; slot < 4; ++slot) sums[slot] += entry.weight * slots[slot];
            }
            for (const auto& [slot, offset] : path.writes)
                self.Pixel(x, y)[offset] = static_cast<std::uint8_t>(Clamp(sums[slot] / list.total));
        }
}

class ScaleScenes : public PluginTest, public ::testing::WithParamInterface<int> {
  protected:
    static int Size(Random& random, int most) { return random.Between(1, random.Below(3) == 0 ? 5 : most); }

    // Of the wanted size, or of another, or the same upside down.
    static Twin Intermediate(Scene& scene, int width, int height) {
        Random& random = scene.random();
        const bool other = random.Below(2) == 0;
        const Twin made =
            scene.Memory(other ? Size(random, width + 3) : width, other ? Size(random, height + 3) : height, kScaling);
        return random.Below(3) == 0 ? scene.View(made, "MirroredView") : made;
    }
};

TEST_P(ScaleScenes, GiveThePlainBytes) {
    Scene scene(static_cast<std::uint64_t>(GetParam()));
    Random& random = scene.random();
    for (int round = 0; round < 150; ++round) {
        scene.Clear();
        const Twin source =
            scene.Kind(round % Scene::kKinds, Size(random, 120), Size(random, 50), random.Between(1, 13));
        const Twin self = random.Below(6) == 0
                              ? scene.View(source, "MirroredView")
                              : scene.Kind(random.Below(Scene::kKinds), Size(random, 120), Size(random, 50),
                                           random.Below(3) == 0 ? random.Between(15, 21) : random.Between(1, 13));
        const int width = random.Below(2) == 0 ? self.model.width : Size(random, 140),
                  height = random.Below(2) == 0 ? self.model.height : Size(random, 60);
        const int rows = source.model.height;
        const Twin temp = random.Below(2) == 0 ? Intermediate(scene, width, rows) : Twin{};
        if (random.Below(4) == 0) Set(source.live, "YieldTicks", Value(1));
        const ModelPicture middle = temp.live ? temp.model : NewModel(width, rows, kScaling);
        ASSERT_TRUE(CallBool(self.live, "Scale", source.live, temp.live, GetParam(), width, height));
        const Path path = PathOf(source.model, self.model);
        PassAcross(source.model, path, middle, GetParam(), width);
        PassDown(middle, path, self.model, GetParam(), rows, width, height);
        ASSERT_TRUE(scene.Same()) << "round " << round << ": " << kFormats[source.model.format].name << " "
                                  << source.model.width << "x" << rows << " to " << kFormats[self.model.format].name
                                  << " " << width << "x" << height;
    }
}

INSTANTIATE_TEST_SUITE_P(Every, ScaleScenes, ::testing::Range(1, scale_test::kModes + 1),
                         [](const auto& kernel) { return scale_test::kModeNames[kernel.param]; });

}  // namespace
