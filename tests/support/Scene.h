// Live pictures beside plain models of them.
//
// A Scene makes pictures of the plug-in, each with a model: the same bytes in a vector, and what
// the picture's properties say of them. A test runs an operation on the live pictures and a
// plain loop on the models, then asks whether all storages are still the same, byte for byte,
// padding included. Views of one picture share its storage in the model too, so overlapping
// sources and destinations come out as the plain loop has them.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/Formats.h"
#include "tests/support/PluginFixture.h"

namespace support {

struct ModelStorage {
    Bytes bytes;
    std::int64_t rowSize;
    std::int64_t rows;
};

struct ModelPicture {
    std::shared_ptr<ModelStorage> storage;
    bool mirrored = false;  // rows count from the bottom
    int rowOffset = 0, width = 0, height = 0, format = 0, pixelSize = 0;
    int red = 0, green = 0, blue = 0, gray = 0, alpha = 0;  // byte offsets
    bool isRGB = false, isGray = false, hasAlpha = false, hasColors = false, hasGray = false;

    // First byte of row y; null when the storage has no such row.
    std::uint8_t* Row(std::int64_t y) const;

    // Offsets of the channels that operations work on: gray or red, green, blue, then alpha.
    // Empty for a picture that is neither gray nor RGB.
    std::vector<int> Channels() const;

    // Pixel x of row y, which must be there.
    std::uint8_t* Pixel(std::int64_t x, std::int64_t y) const { return Row(y) + x * pixelSize; }
};

// A new zero picture in memory, as the plain constructor makes it.
ModelPicture NewModel(int width, int height, int format);

// The name of a format's code, for tests with codes as parameters.
std::string CodeName(const ::testing::TestParamInfo<int>& info);

// A live picture and its model.
struct Twin {
    Ref<Object> live;
    ModelPicture model;
};

class Scene {
  public:
    explicit Scene(std::uint64_t seed) : random_(seed) {}

    // Pictures with random bytes: in memory, around a memory block with rows of rowSize bytes, and
    // mapped from a scratch file.
    Twin Memory(int width, int height, int format);
    Twin Block(int width, int height, int format, int rowSize);
    Twin Mapped(int width, int height, int format, const std::string& path, int blockSize = 0);

    // A view of a picture, by the name of the method that makes it; its live picture is nil where
    // the method refuses.
    template <class... Arguments>
    Twin View(const Twin& parent, std::string_view method, const Arguments&... arguments) {
        return Describe(CallObject(parent.live, method, arguments...), parent.model,
                        method == std::string_view("MirroredView"));
    }

    // A picture of one of kKinds kinds: plain, clips and mirrored views in both orders, channel and
    // RGB views, in memory of its own or a block's. About width × height pixels; where the format
    // has no such view, a plain one.
    static constexpr int kKinds = 10;
    Twin Kind(int kind, int width, int height, int format);

    // Whether every storage of the scene holds what its model holds.
    ::testing::AssertionResult Same() const;

    // Gives up the pictures made so far.
    void Clear() { roots_.clear(); }

    Random& random() { return random_; }

  private:
    struct Root {
        Ref<Object> live;
        Ref<Object> block;  // around which it was made, or nil
        std::shared_ptr<ModelStorage> storage;
    };

    Twin Describe(const Ref<Object>& live, const ModelPicture& parent, bool mirrors);
    Twin AddRoot(const Ref<Object>& live, const Ref<Object>& block);

    Random random_;
    std::vector<Root> roots_;
};

// Whether a live picture without views is just like a model: size, format and every byte.
::testing::AssertionResult SamePicture(const Ref<Object>& live, const ModelPicture& model);

}  // namespace support
