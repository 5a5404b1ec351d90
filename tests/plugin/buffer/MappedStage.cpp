// Mapped pictures and their doubles in memory.
#include "tests/plugin/buffer/MappedStage.h"

#include <algorithm>
#include <bit>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <filesystem>
#include <ostream>

#include "tests/support/Formats.h"

namespace mapped {

using namespace support;

namespace {

constexpr int kScaling = 14;

// Pixels of a root around its view.
constexpr int kLeft = 3;
constexpr int kRight = 2;
constexpr int kTop = 2;
constexpr int kBottom = 1;

// Bytes of a row as they lie, and in an order that is the same everywhere; both ways. The floats of
// the one format that has any are in the machine's order.
Bytes Reordered(Bytes bytes, int format) {
    if (format != kScaling || std::endian::native == std::endian::little) return bytes;
    for (auto word = bytes.begin(); word != bytes.end(); word += sizeof(float))
        std::reverse(word, word + sizeof(float));
    return bytes;
}

void FillRow(const Ref<Object>& picture, int y, const Bytes& bytes) {
    const Bytes row = Reordered(bytes, static_cast<int>(GetInt(picture, "ImageFormat")));
    std::copy(row.begin(), row.end(), RowAddress(picture, y));
}

}  // namespace

void PrintTo(const Setting& setting, std::ostream* stream) { *stream << setting.name; }

ScratchFolder::ScratchFolder()
    : path_("/dev/shm/tqx-test-XXXXXX"), noReservation_(SystemCall::PosixFallocate, 1, INT_MAX, EOPNOTSUPP) {
    if (mkdtemp(path_.data())) return;
    path_ = (std::filesystem::temp_directory_path() / "tqx-test-XXXXXX").string();
    if (!mkdtemp(path_.data())) ADD_FAILURE() << "no scratch folder can be made";
}

ScratchFolder::~ScratchFolder() {
    EXPECT_TRUE(std::filesystem::is_empty(path_));
    std::filesystem::remove_all(path_);
}

Stage::Stage(const Setting& setting, bool inMemory, const std::string& folder)
    : setting_(setting), mapped_(inMemory ? kNone : setting.mapped), folder_(folder) {
    const int side = whole() ? setting.height : std::max(setting.width, setting.height);
    pictures.self = Make("self", kSelf, setting.width, setting.height, setting.format);
    pictures.other = Make("other", kOther, setting.width * 4 / 3 + 1, setting.height * 5 / 4 + 1, setting.format);
    pictures.intermediate = Make("intermediate", kIntermediate, setting.width, side * 2, kScaling);
    if (setting.destination == Destination::Given)
        pictures.destination = Make("destination", kDestination, side, side, setting.format);
    if (setting.destination == Destination::Self) pictures.destination = pictures.self;
    if (setting.destination == Destination::Factory) UseFactory();
}

Bytes Stage::RootBytes() const {
    Bytes bytes;
    for (const Root& root : roots_) {
        const auto height = static_cast<int>(GetInt(root.picture, "Height"));
        const auto format = static_cast<int>(GetInt(root.picture, "ImageFormat"));
        for (int y = 0; y < height; ++y) {
            const std::uint8_t* row = RowAddress(root.picture, y);
            if (!row) continue;
            const Bytes ordered = Reordered({row, row + root.bytesPerRow}, format);
            bytes.insert(bytes.end(), ordered.begin(), ordered.end());
        }
    }
    return bytes;
}

void Stage::UseFactory() {
    Set(pictures.self, "Factory", Value(NewFactory([this](int width, int height, int format) {
            return Make("made" + std::to_string(roots_.size()), kDestination, width, height, format);
        })));
}

Ref<Object> Stage::MakeRoot(const std::string& name, bool mapped, int width, int height, int format) const {
    if (!mapped) return New("PictureTQX", width, height, format);
    if (!whole()) width = setting_.bytesPerRow / kFormats[format].pixelSize;
    return NewMapped(folder_ + "/" + name, width, height, format);
}

// A view of `width` × `height` of a new root with random bytes.
Ref<Object> Stage::Make(const std::string& name, Mapped role, int width, int height, int format) {
    const int rootWidth = whole() ? width : kLeft + width + kRight;
    const int rootHeight = whole() ? height : kTop + height + kBottom;
    const auto root = MakeRoot(name, (mapped_ & role) != 0, rootWidth, rootHeight, format);
    EXPECT_TRUE(GetBool(root, "Valid")) << name;
    const int bytesPerRow = rootWidth * kFormats[format].pixelSize;
    Random random(roots_.size() + 1);
    for (int y = 0; y < rootHeight; ++y) FillRow(root, y, random.NextBytes(static_cast<std::size_t>(bytesPerRow)));
    roots_.push_back({root, bytesPerRow});
    return ViewOf(root, width, height, format);
}

Ref<Object> Stage::ViewOf(const Ref<Object>& root, int width, int height, int format) const {
    if (whole()) return root;
    const auto clip = CallObject(root, "ClipImage", kLeft, kTop, width, height);
    if (setting_.view == View::MirroredClip) return CallObject(clip, "MirroredView");
    if (format == kScaling) return clip;
    if (setting_.view == View::RedOfClip) return CallObject(clip, "RedChannel");
    if (setting_.view == View::ColorsOfClip) return CallObject(clip, "RGBChannels");
    return clip;
}

}  // namespace mapped
