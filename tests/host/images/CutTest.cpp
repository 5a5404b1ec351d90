// Files of every kind cut at every byte: what can still be read is the whole image, and everything
// else is an error that names the file. A part of an image is never passed off as one.
#include <map>

#include "tests/host/images/ImageTestFiles.h"
#include "tests/support/Places.h"

namespace host {
namespace {

namespace fs = std::filesystem;

// The small files that the fuzzers of a format start from, those that can be read.
std::map<std::string, std::string> FilesOf(const std::string& format) {
    std::map<std::string, std::string> files;
    for (const fs::directory_entry& entry :
         fs::directory_iterator(fs::path(support::SourceFolder()) / "fuzz/corpus" / format))
        if (ReadFailure(entry.path().string()).empty()) files[entry.path().filename()] = ReadBytes(entry.path());
    return files;
}

class CutFiles : public testing::TestWithParam<const char*> {};

TEST_P(CutFiles, AreWholeOrAnError) {
    const auto files = FilesOf(GetParam());
    ASSERT_GE(files.size(), 4U);
    for (const auto& [name, whole] : files) {
        const TestImage image = ReadCut(whole, whole.size());
        std::size_t readable = 0;
        for (std::size_t length = 0; length < whole.size(); ++length) {
            try {
                EXPECT_EQ(ReadCut(whole, length), image) << name << " cut at " << length << " of " << whole.size();
                ++readable;
            } catch (const ImageError& error) {
                EXPECT_EQ(std::string(error.what()).find("cut: "), 0U) << error.what();
            }
        }
        // What follows the image: an end mark, spare bytes of the last entry, a second picture.
        EXPECT_LE(readable, 16U) << name;
    }
}

INSTANTIATE_TEST_SUITE_P(Formats, CutFiles, testing::Values("png", "jpeg", "tiff", "webp", "gif", "bmp", "pnm"),
                         [](const auto& instance) { return std::string(instance.param); });

}  // namespace
}  // namespace host
