// Image files where the system gives less than it is asked for: each call fails in turn, alone and
// with all that follow. Whatever fails, there is the whole image or an error, and on disk the old
// file or the new one.
#include <cerrno>

#include "tests/host/images/ImageTestFiles.h"
#include "tests/support/Interpose.h"
#include "tests/support/Places.h"

namespace host {
namespace {

using support::FailingCall;
using support::SystemCall;

constexpr std::int64_t kEver = std::int64_t{1} << 40;

// Runs a step with call number 1, 2, … failing until it makes fewer calls; `check` looks at each
// outcome: whether the step came to its end.
template <class Step, class Check>
void FailEachCall(SystemCall call, int errorNumber, Step step, Check check) {
    for (const std::int64_t count : {std::int64_t{1}, kEver})
        for (std::int64_t nth = 1;; ++nth) {
            bool failed = false, done = false;
            {
                const FailingCall failing(call, nth, count, errorNumber);
                try {
                    step();
                    done = true;
                } catch (const ImageError&) {
                } catch (const std::bad_alloc&) {
                    // Not even the error's text had room.
                }
                failed = failing.failed() > 0;
            }
            check(done);
            if (testing::Test::HasFatalFailure()) FAIL() << "call " << nth << " of kind " << static_cast<int>(call);
            if (!failed) {
                ASSERT_TRUE(done);
                break;
            }
        }
}

constexpr std::pair<SystemCall, int> kCalls[] = {
    {SystemCall::Malloc, ENOMEM}, {SystemCall::Calloc, ENOMEM},         {SystemCall::Open, EMFILE},
    {SystemCall::Lseek, EIO},     {SystemCall::Write, ENOSPC},          {SystemCall::Pwrite, ENOSPC},
    {SystemCall::Ftruncate, EIO}, {SystemCall::PosixFallocate, ENOSPC}, {SystemCall::FileMapping, ENOMEM}};

// Two libraries end the process where the memory for their own small tables or states fails: that
// of WebP, and that of TIFF where it makes its JPEG decoder. There is no way around it from outside.
bool EndsTheProcess(SystemCall call, const std::string& path) {
    return call == SystemCall::Malloc && (path.ends_with(".webp") || path.ends_with("/jpeg.tif"));
}

class Starved : public testing::TestWithParam<const char*> {};

TEST_P(Starved, ReadersGiveTheWholeImageOrAnError) {
    const auto folder = std::filesystem::path(support::SourceFolder()) / "fuzz/corpus" / GetParam();
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        const std::string path = entry.path().string();
        const std::string failure = ReadFailure(path);
        if (!failure.empty()) continue;
        const TestImage whole = ReadImage(path);
        TestImage image;
        for (const auto& [call, error] : kCalls)
            if (!EndsTheProcess(call, path))
                FailEachCall(
                    call, error, [&] { image = ReadImage(path); },
                    [&](bool done) { ASSERT_TRUE(!done || image == whole) << path; });
    }
}

INSTANTIATE_TEST_SUITE_P(Formats, Starved, testing::Values("png", "jpeg", "tiff", "webp", "gif", "bmp", "pnm"),
                         [](const auto& instance) { return std::string(instance.param); });

TEST(StarvedWriters, LeaveTheOldFileOrTheNewOne) {
    const TestImage image = MakeTestImage(90, 70, PixelLayout::Rgba);
    for (const char* name : {"a.png", "a.jpg", "a.tif", "a.webp", "a.bmp", "a.pgm", "a.ppm", "a.pam"}) {
        TemporaryDirectory directory;
        const std::string path = directory.Path(name);
        WriteImage(path, image);
        const TestImage whole = ReadImage(path);  // some coders pack less well where memory is short
        WriteBytes(path, "old");
        for (const auto& [call, error] : kCalls)
            if (!EndsTheProcess(call, path))
                FailEachCall(
                    call, error, [&] { WriteImage(path, image); },
                    [&](bool done) {
                        ASSERT_TRUE(done ? ReadImage(path) == whole : ReadBytes(path) == "old") << path;
                        ASSERT_EQ(directory.FileCount(), 1U) << path;
                        WriteBytes(path, "old");
                    });
    }
}

}  // namespace
}  // namespace host
