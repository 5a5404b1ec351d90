// Every operation gives the same bytes on mapped pictures as in memory: whatever is mapped of
// what it works on, through whatever view, and wherever windows end.
#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <filesystem>
#include <set>

#include "tests/support/Formats.h"
#include "tests/support/Interpose.h"
#include "tests/support/MappedPictures.h"
#include "tests/support/PictureOperations.h"

namespace {

using namespace support;

constexpr int kScaling = 14;

// Which pictures are mapped.
enum Mapped : unsigned { kNone = 0, kSelf = 1, kOther = 2, kDestination = 4, kIntermediate = 8, kAll = 15 };

enum class Destination { Given, Factory, Self };

enum class View {
    Whole,
    Clip,  // of a picture of few rows a window; begins at pixel 3 of row 2
    MirroredClip,
    RedOfClip,
    ColorsOfClip,
};

struct Setting {
    const char* name;
    int format;
    int width, height;
    unsigned mapped;
    Destination destination = Destination::Given;
    View view = View::Clip;
    int bytesPerRow = kFiveRowWidth;  // about, of the mapped pictures behind clips
};

constexpr Setting kSettings[] = {
    {"AllMapped", 1, 37, 23, kAll},
    {"AllMappedWithAlpha", 7, 37, 23, kAll},
    {"AllMappedGray", 11, 37, 23, kAll},
    {"AllMappedGrayWithAlpha", 13, 37, 23, kAll},
    {"AllMappedThirdOfThree", 17, 37, 23, kAll},
    {"SelfMapped", 2, 37, 23, kSelf},
    {"OthersMapped", 1, 37, 23, kAll & ~kSelf},
    {"OtherMapped", 4, 37, 23, kOther},
    {"IntermediateMapped", 1, 37, 23, kIntermediate},
    {"FactoryMapped", 1, 37, 23, kDestination, Destination::Factory},
    {"SelfAndFactoryMapped", 9, 37, 23, kAll, Destination::Factory},
    {"InPlace", 1, 37, 23, kAll, Destination::Self},
    {"InPlaceWithAlpha", 7, 37, 23, kAll, Destination::Self},
    {"InPlaceGray", 11, 37, 23, kAll, Destination::Self},
    {"Mirrored", 6, 37, 23, kAll, Destination::Given, View::MirroredClip},
    {"MirroredInPlace", 10, 37, 23, kAll, Destination::Self, View::MirroredClip},
    {"RedChannels", 1, 37, 23, kAll, Destination::Given, View::RedOfClip},
    {"RedChannelInPlace", 5, 37, 23, kAll, Destination::Self, View::RedOfClip},
    {"ColorChannels", 4, 37, 23, kAll, Destination::Given, View::ColorsOfClip},
    {"SixRows", 1, 37, 6, kAll},
    {"ThreeRows", 2, 37, 3, kAll, Destination::Factory},
    {"OneRow", 1, 37, 1, kAll},
    {"OneColumn", 1, 1, 23, kAll},
    {"InOneWindow", 1, 37, 23, kAll, Destination::Given, View::Whole},
    {"SixteenRowsAWindow", 1, 37, 53, kAll, Destination::Factory, View::Clip, kLeastWindow / 16},
};

// The picture that a view is of: all its bytes to the right edge of the view count.
struct Root {
    Ref<Object> picture;
    std::int64_t bytesPerRow;
};

// The pictures of one run, in memory or mapped.
class Stage {
  public:
    Stage(const Setting& setting, bool inMemory, std::string folder)
        : setting_(setting), mapped_(inMemory ? kNone : setting.mapped), folder_(std::move(folder)) {
        const int side = setting.view == View::Whole ? setting.height : std::max(setting.width, setting.height);
        pictures.self = Make("self", kSelf, setting.width, setting.height, setting.format);
        pictures.other = Make("other", kOther, setting.width * 4 / 3 + 1, setting.height * 5 / 4 + 1, setting.format);
        pictures.intermediate = Make("intermediate", kIntermediate, setting.width, side * 2, kScaling);
        if (setting.destination == Destination::Given)
            pictures.destination = Make("destination", kDestination, side, side, setting.format);
        if (setting.destination == Destination::Self) pictures.destination = pictures.self;
        if (setting.destination == Destination::Factory) UseFactory();
    }

    Pictures pictures;

    // All bytes of all pictures made by now, rows from the top.
    Bytes RootBytes() const {
        Bytes bytes;
        for (const Root& root : roots_) {
            const auto height = static_cast<int>(GetInt(root.picture, "Height"));
            for (int y = 0; y < height; ++y) {
                const std::uint8_t* row = RowAddress(root.picture, y);
                if (row) bytes.insert(bytes.end(), row, row + root.bytesPerRow);
            }
        }
        return bytes;
    }

  private:
    static constexpr int kLeft = 3;  // pixels of the root beside the view
    static constexpr int kRight = 2;
    static constexpr int kTop = 2;
    static constexpr int kBottom = 1;

    bool whole() const { return setting_.view == View::Whole; }

    void UseFactory() {
        Set(pictures.self, "Factory", Value(NewFactory([this](int width, int height, int format) {
                return Make("made" + std::to_string(roots_.size()), kDestination, width, height, format);
            })));
    }

    Ref<Object> MakeRoot(const std::string& name, bool mapped, int width, int height, int format) {
        if (!mapped) return New("PictureTQX", width, height, format);
        if (!whole()) width = setting_.bytesPerRow / kFormats[format].pixelSize;
        return NewMapped(folder_ + "/" + name, width, height, format);
    }

    // A view of `width` × `height` of a new root with random bytes.
    Ref<Object> Make(const std::string& name, Mapped role, int width, int height, int format) {
        const int rootWidth = whole() ? width : kLeft + width + kRight;
        const int rootHeight = whole() ? height : kTop + height + kBottom;
        auto root = MakeRoot(name, (mapped_ & role) != 0, rootWidth, rootHeight, format);
        EXPECT_TRUE(GetBool(root, "Valid")) << name;
        roots_.push_back({root, std::int64_t{rootWidth} * kFormats[format].pixelSize});
        FillRoot(roots_.back());
        return ViewOf(root, width, height, format);
    }

    void FillRoot(const Root& root) {
        Random random(roots_.size());
        const auto height = static_cast<int>(GetInt(root.picture, "Height"));
        for (int y = 0; y < height; ++y) {
            const Bytes bytes = random.NextBytes(static_cast<std::size_t>(root.bytesPerRow));
            std::copy(bytes.begin(), bytes.end(), RowAddress(root.picture, y));
        }
    }

    Ref<Object> ViewOf(const Ref<Object>& root, int width, int height, int format) const {
        if (whole()) return root;
        const auto clip = CallObject(root, "ClipImage", kLeft, kTop, width, height);
        if (setting_.view == View::MirroredClip) return CallObject(clip, "MirroredView");
        if (format == kScaling) return clip;
        if (setting_.view == View::RedOfClip) return CallObject(clip, "RedChannel");
        if (setting_.view == View::ColorsOfClip) return CallObject(clip, "RGBChannels");
        return clip;
    }

    const Setting& setting_;
    unsigned mapped_;
    std::string folder_;
    std::vector<Root> roots_;
};

void PrintTo(const Setting& setting, std::ostream* stream) { *stream << setting.name; }

struct Result {
    Bytes given;
    Bytes pixels;
};

Result RunOn(const Setting& setting, const PictureOperation& operation, bool inMemory, const std::string& folder) {
    Stage stage(setting, inMemory, folder);
    Outcome outcome(stage.pictures);
    operation.run(stage.pictures, outcome);
    return {outcome.bytes(), stage.RootBytes()};
}

using Case = std::tuple<Setting, PictureOperation>;

std::string CaseName(const ::testing::TestParamInfo<Case>& info) {
    return std::string(std::get<0>(info.param).name) + "_" + OperationName(std::get<1>(info.param));
}

// Files of wide rows of which little is touched: in memory, and with holes, they cost just that.
class MappedOperations : public PluginTest, public ::testing::WithParamInterface<Case> {
  protected:
    void SetUp() override {
        PluginTest::SetUp();
        std::string folder = "/dev/shm/tqx-test-XXXXXX";
        folder_ = mkdtemp(folder.data()) ? folder : ScratchPath("");
    }

    void TearDown() override {
        EXPECT_TRUE(std::filesystem::is_empty(folder_));
        std::filesystem::remove(folder_);
        PluginTest::TearDown();
    }

    std::string folder_;
    const FailingCall noReservation_{SystemCall::PosixFallocate, 1, INT_MAX, EOPNOTSUPP};
};

// The order of a quarter turn by blocks is that of the windows, so in place it gives other bytes.
bool DependsOnWindows(const Setting& setting, const PictureOperation& operation) {
    const std::string member = operation.member;
    return setting.destination == Destination::Self && (member == "Rotate90/1" || member == "Rotate270/1");
}

TEST_P(MappedOperations, GiveTheSameBytesAsInMemory) {
    const auto& [setting, operation] = GetParam();
    if (DependsOnWindows(setting, operation)) return;
    const Result expected = RunOn(setting, operation, true, "");
    const Result actual = RunOn(setting, operation, false, folder_);
    EXPECT_TRUE(SameBytes(actual.given, expected.given));
    EXPECT_TRUE(SameBytes(actual.pixels, expected.pixels));
}

INSTANTIATE_TEST_SUITE_P(Every, MappedOperations,
                         ::testing::Combine(::testing::ValuesIn(kSettings),
                                            ::testing::ValuesIn(PictureOperations().begin(),
                                                                PictureOperations().end())),
                         CaseName);

class MappedOperationsTable : public PluginTest {};

TEST_F(MappedOperationsTable, HasEveryMemberOfTheClass) {
    std::set<std::string> known(OtherMembers().begin(), OtherMembers().end());
    for (const PictureOperation& operation : PictureOperations()) known.insert(operation.member);
    const host::Class& pictures = host::Runtime::Get().ClassNamed("PictureTQX");
    std::set<std::string> declared;
    for (const host::Method& method : pictures.methods()) {
        const std::string name = method.declaration.name + "/" + std::to_string(method.declaration.parameters.size());
        declared.insert(name);
        if (method.assignable()) declared.insert(name + "=");
    }
    EXPECT_EQ(known, declared);
}

}  // namespace
