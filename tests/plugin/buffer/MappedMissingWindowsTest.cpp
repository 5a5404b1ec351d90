// Every operation while now and then a window can't be mapped: the rows that would lie there are
// left alone, and everything is there again afterwards.
#include <algorithm>
#include <cerrno>
#include <climits>

#include "tests/plugin/buffer/MappedStage.h"
#include "tests/support/Formats.h"

namespace {

using namespace support;
using namespace mapped;

constexpr Setting kSettings[] = {
    {"Given", 1, 37, 23, kAll},
    {"InPlaceWithAlpha", 7, 37, 23, kAll, Destination::Self},
    {"Mirrored", 1, 37, 23, kAll, Destination::Given, View::MirroredClip},
};

// Which requests for a window fail, counted from 1.
constexpr struct { int first, count; } kFailures[] = {{1, 1}, {1, INT_MAX}, {2, 2}, {3, INT_MAX}, {5, 1}};

// The members that make each row of their result from the same row of one picture.
constexpr const char* kByRows[] = {
    "ClearRect/0",      "ClearRect/4",      "FillRect/1",   "FillRect/5",       "FillRectRGB/1",    "FillRectRGB/3",
    "FillRectRGB/4",    "Invert/0",         "Invert/4",     "HMirror/0",        "GammaFilter/2",    "GammaFilter/3",
    "GammaFilter/4",    "GammaFilter/5",    "GainFilter/3", "TransferFilter/2", "TransferFilter/3", "TransferFilter/4",
    "TransferFilter/5", "SolarizeFilter/1", "CopyPixels/1",
};

bool WorksByRows(const PictureOperation& operation) {
    return std::any_of(std::begin(kByRows), std::end(kByRows),
                       [&](const char* member) { return std::string_view(member) == operation.member; });
}

// Whether each byte of `actual` is what it was before the operation or what it makes of it.
bool BytesAreOldOrNew(const Bytes& actual, const Bytes& before, const Bytes& after) {
    if (actual.size() != before.size() || actual.size() != after.size()) return false;
    for (std::size_t i = 0; i < actual.size(); ++i)
        if (actual[i] != before[i] && actual[i] != after[i]) return false;
    return true;
}

using Case = std::tuple<Setting, PictureOperation>;

std::string CaseName(const ::testing::TestParamInfo<Case>& info) {
    return std::string(std::get<0>(info.param).name) + "_" + OperationName(std::get<1>(info.param));
}

class MappedMissingWindows : public PluginTest, public ::testing::WithParamInterface<Case> {};

TEST_P(MappedMissingWindows, CostRowsAndNothingElse) {
    const auto& [setting, operation] = GetParam();
    const ScratchFolder folder;
    Stage whole(setting, true, "");
    const Bytes before = whole.RootBytes();
    {
        Outcome outcome(whole.pictures);
        operation.run(whole.pictures, outcome);
    }
    const Bytes after = whole.RootBytes();
    for (const auto& [first, count] : kFailures) {
        SCOPED_TRACE(first);
        Stage stage(setting, false, folder.path());
        {
            const FailingCall failing(SystemCall::FileMapping, first, count, ENOMEM);
            Outcome outcome(stage.pictures);
            operation.run(stage.pictures, outcome);
            if (WorksByRows(operation) && first <= 3) {  // a part of a picture has no more windows
                EXPECT_GE(failing.failed(), 1) << "nothing was missing";
            }
        }
        TakeThrown();  // rows that can't be had are out of bounds
        const Bytes actual = stage.RootBytes();
        EXPECT_EQ(actual.size(), before.size()) << "a row is still missing";
        if (WorksByRows(operation)) {
            EXPECT_TRUE(BytesAreOldOrNew(actual, before, after));
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Every, MappedMissingWindows,
                         ::testing::Combine(::testing::ValuesIn(kSettings),
                                            ::testing::ValuesIn(PictureOperations().begin(),
                                                                PictureOperations().end())),
                         CaseName);

}  // namespace
