// Every row of the tables of image files is reached.
#include <dlfcn.h>
#include <gmock/gmock.h>
#include <webp/decode.h>
#include <webp/encode.h>

#include <cerrno>
#include <cstdlib>
#include <random>
#include <set>

#include "host/messages/ImageMessages.h"
#include "tests/host/images/ImageTestFiles.h"
#include "tests/support/Interpose.h"
#include "tests/support/Places.h"

namespace {

bool otherWebP = false;

// The library's own function of a name.
template <class Function>
Function* Real(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

// In front of the library's, which give 0 where versions differ.
extern "C" {

int WebPInitDecoderConfigInternal(WebPDecoderConfig* config, int version) {
    static auto* real = Real<int(WebPDecoderConfig*, int)>("WebPInitDecoderConfigInternal");
    return otherWebP ? 0 : real(config, version);
}

int WebPPictureInitInternal(WebPPicture* picture, int version) {
    static auto* real = Real<int(WebPPicture*, int)>("WebPPictureInitInternal");
    return otherWebP ? 0 : real(picture, version);
}

int WebPConfigInitInternal(WebPConfig* config, WebPPreset preset, float quality, int version) {
    static auto* real = Real<int(WebPConfig*, WebPPreset, float, int)>("WebPConfigInitInternal");
    return otherWebP ? 0 : real(config, preset, quality, version);
}
}

namespace host {
namespace {

using support::FailingCall;
using support::SystemCall;

class Told {
  public:
    // What a step says, without the name before it.
    template <class Step>
    void Try(const Step& step) {
        try {
            step();
        } catch (const ImageError& error) {
            const std::string text = error.what();
            told_.insert(text.substr(text.find(": ") + 2));
        } catch (const std::bad_alloc&) {
            // Not even the error's text had room.
        }
    }

    void Read(const std::string& path, const ImageReadSettings& settings = {}) {
        Try([&] { ReadImage(path, settings); });
    }

    void Write(const std::string& path, std::int32_t width, std::int32_t height) {
        Try([&] { ImageWriter(path, width, height, PixelLayout::Rgb); });
    }

    const std::set<std::string>& all() const { return told_; }

  private:
    std::set<std::string> told_;
};

// A JPEG file in several scans.
std::string ProgressivePath() { return support::SourceFolder() + "/fuzz/corpus/jpeg/progressive.jpg"; }

// Cut, and with a byte or two changed near the head.
void ReadDamaged(const std::string& whole, Told& told) {
    std::mt19937 random(7);
    for (int i = 0; i < 400; ++i) {
        std::string bytes = whole;
        for (std::uint32_t changes = random() % 3; changes > 0; --changes)
            bytes[random() % std::min<std::size_t>(bytes.size(), 600)] = static_cast<char>(random());
        if (i % 4 == 0) bytes.resize(random() % bytes.size());
        told.Try([&] {
            ImageReader reader(bytes.data(), bytes.size(), "damaged", ImageReadSettings{std::int64_t{1} << 20});
            std::vector<std::uint8_t> row(std::size_t(reader.Info().width) * 4);
            for (std::int32_t y = 0; y < reader.Info().height; ++y) reader.ReadRow(row.data());
        });
    }
}

void ReadAllDamaged(Told& told) {
    for (const char* format : {"png", "jpeg", "tiff", "webp", "gif", "bmp", "pnm"})
        for (const auto& entry :
             std::filesystem::directory_iterator(support::SourceFolder() + "/fuzz/corpus/" + format))
            ReadDamaged(ReadBytes(entry.path().string()), told);
}

void ReadOddFiles(const TemporaryDirectory& directory, Told& told) {
    const std::string plain = directory.Path("plain.png");
    WriteImage(plain, MakeTestImage(40, 30, PixelLayout::Rgb));
    for (const char* path : {"/", "/dev/null", "/none/at/all"}) told.Read(path);
    WriteBytes(directory.Path("empty"), "");
    told.Read(directory.Path("empty"));
    WriteBytes(directory.Path("text"), "hello, world");
    told.Read(directory.Path("text"));
    told.Read(plain, {.pixelLimit = 10});
    told.Try([&] {
        ImageReader reader(plain);
        for (std::uint8_t row[40 * 3];;) reader.ReadRow(row);
    });
    WriteBytes(directory.Path("wide.pnm"), "P6 2000000000 1 255\n");
    told.Read(directory.Path("wide.pnm"));
    WriteBytes(directory.Path("none.pnm"), "P6 0 1 255\n");
    told.Read(directory.Path("none.pnm"));
    WriteBytes(directory.Path("none.gif"), std::string("GIF89a\1\0\1\0\0\0\0;", 14));
    told.Read(directory.Path("none.gif"));
    std::string masks = ReadBytes(support::SourceFolder() + "/fuzz/corpus/bmp/masks.bmp");
    masks[10] = 54;  // where the pixels begin: behind the head, where the masks are
    WriteBytes(directory.Path("masks.bmp"), masks);
    told.Read(directory.Path("masks.bmp"));
    WriteBytes(directory.Path("large.webp"), std::string("RIFF\0\0\0\0WEBPVP8 ", 16));
    std::filesystem::resize_file(directory.Path("large.webp"), std::uintmax_t{5} << 30);
    told.Read(directory.Path("large.webp"));
}

// Each allocation fails once.
template <class Step>
void Starve(Told& told, const Step& step) {
    for (const SystemCall call : {SystemCall::Malloc, SystemCall::Calloc})
        for (std::int64_t nth = 1; nth <= 40; ++nth) {
            const FailingCall failing(call, nth, 1, ENOMEM);
            told.Try(step);
        }
}

void StarveCoders(const TemporaryDirectory& directory, Told& told) {
    for (const char* name : {"starved.png", "starved.jpg", "starved.tif"}) {
        const std::string path = directory.Path(name);
        const TestImage image = MakeTestImage(40, 30, PixelLayout::Rgb);
        WriteImage(path, image);
        Starve(told, [&] { ReadImage(path); });
        Starve(told, [&] { WriteImage(path, image); });
    }
}

void WriteOddly(const TemporaryDirectory& directory, Told& told) {
    const std::uint8_t row[3] = {};
    for (const char* name : {"a.gif", "a.xyz"}) told.Write(directory.Path(name), 1, 1);
    told.Write(directory.Path("a.png"), 0, 1);
    told.Write(directory.Path("a.jpg"), 70'000, 1);
    told.Write(directory.Path("a.webp"), 1, 70'000);
    told.Write(directory.Path("a.bmp"), 60'000, 60'000);
    told.Write("/none/at/a.png", 1, 1);
    told.Write(directory.Path("."), 1, 1);
    WriteBytes(directory.Path("kept.png"), "");
    std::filesystem::permissions(directory.Path("kept.png"), std::filesystem::perms::owner_read);
    told.Write(directory.Path("kept.png"), 1, 1);
    ImageWriter once(directory.Path("once.png"), 1, 1, PixelLayout::Rgb);
    told.Try([&] { once.Finish(); });
    once.WriteRow(row);
    told.Try([&] { once.WriteRow(row); });
    once.Finish();
    told.Try([&] { once.Finish(); });
}

// The last scan of many times over.
void ReadEndlessScans(const TemporaryDirectory& directory, Told& told) {
    std::string bytes = ReadBytes(ProgressivePath());
    const std::size_t last = bytes.rfind("\xff\xda");
    const std::string scan = bytes.substr(last, bytes.size() - 2 - last);
    for (int i = 0; i < 5000; ++i) bytes.insert(last, scan);
    WriteBytes(directory.Path("scans.jpg"), bytes);
    told.Read(directory.Path("scans.jpg"));
}

// A disk that gives up in the middle.
void ReadFromBrokenDisks(const TemporaryDirectory& directory, Told& told) {
    for (const char* format : {"pnm", "png"})
        for (const auto& entry :
             std::filesystem::directory_iterator(support::SourceFolder() + "/fuzz/corpus/" + format))
            for (std::int64_t nth = 1; nth <= 3; ++nth) {
                const FailingCall failing(SystemCall::Read, nth, 1, EIO);
                told.Read(entry.path().string());
            }
    WriteImage(directory.Path("moved.bmp"), MakeTestImage(4, 3, PixelLayout::Rgb));
    for (std::int64_t nth = 1; nth <= 3; ++nth) {
        const FailingCall failing(SystemCall::Position, nth, 1, EIO);
        told.Try([&] { WriteImage(directory.Path("moved.bmp"), MakeTestImage(4, 3, PixelLayout::Rgb)); });
    }
}

// A library that knows other records than those that it is given.
void UseAnotherLibrary(const TemporaryDirectory& directory, Told& told) {
    const std::string path = directory.Path("other.webp");
    const TestImage image = MakeTestImage(4, 3, PixelLayout::Rgb);
    WriteImage(path, image);
    otherWebP = true;
    told.Read(path);
    told.Try([&] { WriteImage(path, image); });
    otherWebP = false;
}

TEST(ImageMessages, AreEachReached) {
    const TemporaryDirectory directory;
    Told told;
    ReadAllDamaged(told);
    ReadOddFiles(directory, told);
    WriteOddly(directory, told);
    StarveCoders(directory, told);
    ReadEndlessScans(directory, told);
    ReadFromBrokenDisks(directory, told);
    UseAnotherLibrary(directory, told);
    std::set<std::string_view> missing;
    std::vector<Message> rows;
    const auto add = [&](const auto& table) {
        for (const Message& row : RowsOf(table)) rows.push_back(row);
    };
    add(kImageFileSays), add(kImageReadSays), add(kImageWriteSays);
    // What takes a disk or a library that fails in the middle of a step.
    const std::set<std::string_view> beyond = {kImageFileSays.cannotBeRead.text, kImageFileSays.noScratch.text,
                                               kImageReadSays.tiffBare.text};
    for (const Message& row : rows)
        if (!beyond.contains(row.text)) missing.insert(row.text);
    for (const std::string& message : told.all()) {
        std::string_view longest;
        for (const Message& row : rows)
            if (Matches(row.text, message) && row.text.size() > longest.size()) longest = row.text;
        EXPECT_FALSE(longest.empty()) << "of no row: " << message;
        missing.erase(longest);
    }
    EXPECT_THAT(missing, testing::IsEmpty());
}

}  // namespace
}  // namespace host
