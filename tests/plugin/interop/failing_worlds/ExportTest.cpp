// Worlds that the plug-in makes for a host picture and that then fail: nothing outside the plug-in
// could reach them, so they fail from within.
#include <dlfcn.h>

#include "tests/support/Formats.h"
#include "tests/support/Places.h"
#include "tests/support/PluginFixture.h"
#include "tests/support/plugins/FailingWorlds.h"

namespace {

using namespace support;
using failing_worlds::Fault;

constexpr int kRGB = 1, kRGBA = 2, kG = 11;

struct Export {
    const char* member;
    int format;
};

Value Exported(const Ref<Object>& buffer, const Export& one) {
    if (std::string_view(one.member) != "DebugPicture") return Call(buffer, one.member);
    Set(buffer, "DebugPictureEnabled", true);
    return Get(buffer, one.member);
}

class FailingWorlds : public PluginTest, public ::testing::WithParamInterface<Export> {
  protected:
    std::string PluginPath() const override { return support::TestPluginFolder() + "/FailingWorlds.so"; }

    void SetUp() override {
        PluginTest::SetUp();
        void* const module = dlopen(PluginPath().c_str(), RTLD_NOW | RTLD_NOLOAD);
        ASSERT_NE(module, nullptr);
        worlds_ = reinterpret_cast<failing_worlds::RecordFunction>(dlsym(module, failing_worlds::kRecordFunction))();
        dlclose(module);
        *worlds_ = {};
    }

    static Ref<Object> Buffer() {
        const auto buffer = New("PictureTQX", 7, 5, GetParam().format);
        FillRandom(buffer, 1);
        return buffer;
    }

    failing_worlds::Record* worlds_ = nullptr;
};

TEST_P(FailingWorlds, GiveNilAndAreDisposedOf) {
    const auto buffer = Buffer();
    for (const Fault fault : {Fault::NoWorld, Fault::NoPixMap, Fault::LockRefused, Fault::NullBase}) {
        SCOPED_TRACE(static_cast<int>(fault));
        *worlds_ = {fault};
        EXPECT_TRUE(Exported(buffer, GetParam()).IsNil());
        EXPECT_EQ(worlds_->made > 0, fault != Fault::NoWorld);
        EXPECT_EQ(worlds_->disposed, worlds_->made);
        EXPECT_EQ(worlds_->locks, 0);
    }
}

TEST_P(FailingWorlds, AreHandedOverWhenNothingFails) {
    EXPECT_FALSE(Exported(Buffer(), GetParam()).IsNil());
    EXPECT_GT(worlds_->made, 0);
}

INSTANTIATE_TEST_SUITE_P(Exports, FailingWorlds,
                         ::testing::Values(Export{"CopyPicture", kRGB}, Export{"CopyPicture", kG},
                                           Export{"CopyMask", kRGBA}, Export{"CopyPictureWithMask", kRGBA},
                                           Export{"CopyPictureWithMask", kRGB}, Export{"DebugPicture", kRGBA},
                                           Export{"CopyGWorld", kG}, Export{"CopyGWorld", kRGB},
                                           Export{"CopyGWorld", kRGBA}));

}  // namespace
