// Every operation gives the same bytes on mapped pictures as in memory: whatever is mapped of
// what it works on, through whatever view, and wherever windows end.
#include <set>

#include "tests/plugin/buffer/MappedStage.h"
#include "tests/support/Formats.h"

namespace {

using namespace support;
using namespace mapped;

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

class MappedOperations : public PluginTest, public ::testing::WithParamInterface<Case> {};

// The order of a quarter turn by blocks is that of the windows, so in place it gives other bytes.
bool DependsOnWindows(const Setting& setting, const PictureOperation& operation) {
    const std::string member = operation.member;
    return setting.destination == Destination::Self && (member == "Rotate90/1" || member == "Rotate270/1");
}

TEST_P(MappedOperations, GiveTheSameBytesAsInMemory) {
    const auto& [setting, operation] = GetParam();
    if (DependsOnWindows(setting, operation)) return;
    const ScratchFolder folder;
    const Result expected = RunOn(setting, operation, true, "");
    const Result actual = RunOn(setting, operation, false, folder.path());
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
