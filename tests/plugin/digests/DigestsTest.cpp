// Every member gives the same bytes everywhere: in each format, in memory, mapped and through a
// view, what it gives and what it leaves is held against digests in a file.
//
// The inputs come of whole numbers alone. The processor's level is what TQX_CPU_LEVEL says; a level
// that isn't to be had is skipped.
#include <cstdlib>
#include <set>

#include "plugin/rows/CpuLevel.h"
#include "tests/plugin/buffer/MappedStage.h"
#include "tests/plugin/digests/DigestTable.h"
#include "tests/plugin/digests/MoreOperations.h"
#include "tests/support/Formats.h"
#include "tests/support/Places.h"

namespace {

using namespace support;
using namespace digests;

// Wide enough for one of the widest registers in every format, and an uneven rest.
constexpr int kWidth = 77, kHeight = 21;

struct Place {
    const char* name;
    unsigned mapped;
    mapped::Destination destination;
    mapped::View view;
};

constexpr int kMappedBytesPerRow = kLeastWindow / 16;  // a little over half of the rows in a window

constexpr Place kPlaces[] = {
    {"memory", mapped::kNone, mapped::Destination::Factory, mapped::View::Whole},
    {"mapped", mapped::kAll, mapped::Destination::Factory, mapped::View::Clip},
    {"view", mapped::kNone, mapped::Destination::Given, mapped::View::MirroredClip},
};

bool IsWriting() { return std::getenv("TQX_WRITE_DIGESTS") != nullptr; }

std::string TablePath() { return SourceFolder() + "/tests/plugin/digests/digests.txt"; }

std::vector<std::string> Columns() {
    std::vector<std::string> names;
    for (const Format& format : ChannelFormats()) names.emplace_back(format.name);
    return names;
}

DigestTable& Table() {
    static DigestTable table(Columns());
    return table;
}

// FNV-1a.
class Hash {
  public:
    void Add(const Bytes& bytes) {
        for (const std::uint8_t byte : bytes) state_ = (state_ ^ byte) * 1099511628211U;
    }
    Digest Folded() const { return static_cast<Digest>(state_ ^ state_ >> 32); }

  private:
    std::uint64_t state_ = 14695981039346656037U;
};

Digest DigestOf(const PictureOperation& operation, const Place& place, const Format& format,
                const std::string& folder) {
    mapped::Stage stage(
        {place.name, format.code, kWidth, kHeight, place.mapped, place.destination, place.view, kMappedBytesPerRow},
        false, folder);
    Outcome outcome(stage.pictures);
    operation.run(stage.pictures, outcome);
    Hash hash;
    hash.Add(outcome.bytes());
    hash.Add(stage.RootBytes());
    return hash.Folded();
}

// The sequence of rand is the C library's own: pinned is that of the GNU library.
bool IsPinned(const PictureOperation& operation) {
#ifdef __GLIBC__
    return operation.member != nullptr;
#else
    return std::string(operation.member) != "DiffuseFilter/2";
#endif
}

std::vector<PictureOperation> AllOperations() {
    std::vector<PictureOperation> operations(PictureOperations().begin(), PictureOperations().end());
    operations.insert(operations.end(), MoreOperations().begin(), MoreOperations().end());
    return operations;
}

std::string LineName(const PictureOperation& operation, const Place& place) {
    return std::string(operation.member) + "," + place.name;
}

using Case = std::tuple<PictureOperation, Place>;

std::string CaseName(const ::testing::TestParamInfo<Case>& info) {
    return OperationName(std::get<0>(info.param)) + "_" + std::get<1>(info.param).name;
}

const char* ActiveLevelName() {
    constexpr const char* kNames[] = {"plain", "avx2", "avx512"};
    return kNames[static_cast<int>(rows::ActiveCpuLevel())];
}

// Whether this run is at the level it was asked for; any will do where none was.
bool IsAtLevel() {
    const char* const asked = std::getenv("TQX_CPU_LEVEL");
    return !asked || std::string(asked) == ActiveLevelName();
}

class Digests : public PluginTest, public ::testing::WithParamInterface<Case> {
  protected:
    static void SetUpTestSuite() {
        const bool isReady = IsWriting() || Table().Read(TablePath());
        EXPECT_TRUE(isReady) << TablePath();
    }
    static void TearDownTestSuite() {
        const bool isDone = !IsWriting() || Table().Write(TablePath());
        EXPECT_TRUE(isDone) << TablePath();
    }

    void SetUp() override {
        PluginTest::SetUp();
        if (!IsAtLevel()) GTEST_SKIP() << "not to be had: " << std::getenv("TQX_CPU_LEVEL");
    }
};

TEST_P(Digests, AreThoseOfTheTable) {
    const auto& [operation, place] = GetParam();
    if (!IsPinned(operation)) GTEST_SKIP() << "the C library's own sequence of rand";
    const mapped::ScratchFolder folder;
    std::vector<Digest> digests;
    for (const Format& format : ChannelFormats()) digests.push_back(DigestOf(operation, place, format, folder.path()));
    const std::string name = LineName(operation, place);
    if (IsWriting()) return Table().SetLine(name, digests);
    const std::vector<Digest> expected = Table().Line(name);
    ASSERT_EQ(digests.size(), expected.size()) << "no such line: " << name;
    for (std::size_t i = 0; i < digests.size(); ++i)
        EXPECT_EQ(digests[i], expected[i]) << name << " gives other bytes in format " << ChannelFormats()[i].name;
}

INSTANTIATE_TEST_SUITE_P(Every, Digests,
                         ::testing::Combine(::testing::ValuesIn(AllOperations()), ::testing::ValuesIn(kPlaces)),
                         CaseName);

TEST(DigestsTable, HasNoLineOfAMemberThatIsGone) {
    if (IsWriting()) GTEST_SKIP() << "the table is being written";
    std::set<std::string> known;
    for (const PictureOperation& operation : AllOperations())
        for (const Place& place : kPlaces) known.insert(LineName(operation, place));
    DigestTable table(Columns());
    ASSERT_TRUE(table.Read(TablePath()));
    for (const std::string& name : table.Names()) EXPECT_TRUE(known.count(name)) << name;
}

}  // namespace
