// What large files cost, whole and damaged.
#include <gif_lib.h>

#include <cstdlib>

#include "host/images/JpegLibrary.h"
#include "tests/host/images/MemoryFixture.h"

namespace host {
namespace {

// --- Progressive JPEG -----------------------------------------------------------------------

constexpr int kSide = 6600;  // its coefficients are 87 MB

// Grays that differ from block to block.
std::vector<std::uint8_t> GrayRow(int y) {
    std::vector<std::uint8_t> row(kSide);
    for (int x = 0; x < kSide; ++x)
        row[static_cast<std::size_t>(x)] = static_cast<std::uint8_t>((x + y + (x >> 3) * (y >> 3)) >> 2);
    return row;
}

void WriteLargeProgressive(const std::string& path, bool flat) {
    jpeg_compress_struct jpeg{};
    jpeg_error_mgr errors{};
    jpeg.err = jpeg_std_error(&errors);
    jpeg_create_compress(&jpeg);
    std::FILE* stream = std::fopen(path.c_str(), "wb");
    jpeg_stdio_dest(&jpeg, stream);
    jpeg.image_width = jpeg.image_height = kSide;
    jpeg.input_components = 1;
    jpeg.in_color_space = JCS_GRAYSCALE;
    jpeg_set_defaults(&jpeg);
    jpeg_simple_progression(&jpeg);
    jpeg_start_compress(&jpeg, TRUE);
    for (int y = 0; y < kSide; ++y) {
        std::vector<std::uint8_t> row = flat ? std::vector<std::uint8_t>(kSide, 77) : GrayRow(y);
        JSAMPROW address = row.data();
        jpeg_write_scanlines(&jpeg, &address, 1);
    }
    jpeg_finish_compress(&jpeg);
    jpeg_destroy_compress(&jpeg);
    std::fclose(stream);
}

// The sums of all rows as the library decodes them by itself.
std::vector<std::uint64_t> RowSums(const std::string& path) {
    jpeg_decompress_struct jpeg{};
    jpeg_error_mgr errors{};
    jpeg.err = jpeg_std_error(&errors);
    jpeg_create_decompress(&jpeg);
    std::FILE* stream = std::fopen(path.c_str(), "rb");
    jpeg_stdio_src(&jpeg, stream);
    jpeg_read_header(&jpeg, TRUE);
    jpeg_start_decompress(&jpeg);
    std::vector<std::uint64_t> sums;
    std::vector<std::uint8_t> row(kSide);
    while (jpeg.output_scanline < jpeg.output_height) {
        JSAMPROW address = row.data();
        jpeg_read_scanlines(&jpeg, &address, 1);
        std::uint64_t sum = 0;
        for (std::size_t x = 0; x < row.size(); ++x) sum = sum * 31 + row[x];
        sums.push_back(sum);
    }
    jpeg_destroy_decompress(&jpeg);
    std::fclose(stream);
    return sums;
}

TEST_F(ImageMemory, LargeProgressiveFilesReadTheSameAndDamagedOnesCostLittle) {
    const std::string path = directory.Path("a.jpg");
    WriteLargeProgressive(path, false);
    const std::vector<std::uint64_t> expected = RowSums(path);
    ImageReader reader(path);
    std::vector<std::uint8_t> row(kSide);
    for (int y = 0; y < kSide; ++y) {
        reader.ReadRow(row.data());
        std::uint64_t sum = 0;
        for (std::size_t x = 0; x < row.size(); ++x) sum = sum * 31 + row[x];
        ASSERT_EQ(sum, expected[static_cast<std::size_t>(y)]) << "row " << y;
    }
    // A mark that doesn't belong there, in the middle of the last scan.
    std::string bytes = ReadBytes(path);
    bytes.replace(bytes.size() - 1000, 2, "\xff\xd5");
    WriteBytes(directory.Path("damaged.jpg"), bytes);
    ExpectRefusal("damaged.jpg", "is cut short or damaged");
    WriteBytes(directory.Path("cut.jpg"), bytes.substr(0, bytes.size() / 2));
    ExpectRefusal("cut.jpg", "is cut short");
}

TEST_F(ImageMemory, ScansThatOnlyCostTimeAreRefused) {
    WriteLargeProgressive(directory.Path("a.jpg"), true);
    const std::string bytes = ReadBytes(directory.Path("a.jpg"));
    EXPECT_EQ(ReadFailure(directory.Path("a.jpg")), "");
    std::size_t last = bytes.rfind("\xff\xda");
    std::string scan = bytes.substr(last, bytes.size() - 2 - last);
    std::string more = bytes;
    for (int i = 0; i < 93; ++i) more.insert(last, scan);
    WriteBytes(directory.Path("more.jpg"), more);
    ExpectRefusal("more.jpg", "is a damaged JPEG file (too many scans)");
}

// --- Cuts ----------------------------------------------------------------------------------------

void WriteLargeGif(const std::string& path, int side) {
    int error = 0;
    GifFileType* gif = EGifOpenFileName(path.c_str(), false, &error);
    ColorMapObject* map = GifMakeMapObject(2, nullptr);
    EGifPutScreenDesc(gif, side, side, 8, 0, map);
    EGifPutImageDesc(gif, 0, 0, side, side, false, nullptr);
    for (int y = 0; y < side; ++y) {
        std::vector<GifByteType> row(static_cast<std::size_t>(side), GifByteType(y / 16 % 2));
        EGifPutLine(gif, row.data(), side);
    }
    GifFreeMapObject(map);
    EGifCloseFile(gif, &error);
}

// The picture would take 108 MB.
TEST_F(ImageMemory, LargeFilesCutInTheirMiddleCostLittle) {
    constexpr int side = 5200;
    for (const char* extension : {"png", "jpg", "tif", "ppm", "gif"}) {
        const std::string path = directory.Path(std::string("a.") + extension);
        if (std::string(extension) == "gif") {
            WriteLargeGif(path, side);
        } else {
            ImageWriter writer(path, side, side, PixelLayout::Gray);
            const std::vector<std::uint8_t> row(side, 77);
            for (int y = 0; y < side; ++y) writer.WriteRow(row.data());
            writer.Finish();
        }
        EXPECT_EQ(RunScript(directory, kOpen, {path}).exitCode, 0) << extension;
        std::filesystem::resize_file(path, std::filesystem::file_size(path) / 2);
        const Cost cost = RunScript(directory, kOpen, {path});
        EXPECT_EQ(cost.exitCode, 1) << extension;
        EXPECT_NE(cost.err.find(path + ": is "), std::string::npos) << cost.err;
        EXPECT_LT(cost.megabytes, 100) << extension;
    }
}

// --- Pictures in files --------------------------------------------------------------------------

// A mapped picture is written to a file, cleared and read back; the words are its side, folder,
// the file's extension and how far a byte may be off.
const std::string kThereAndBack = R"(
Dim side As Integer = Val(App.Arguments(0))
Dim folder As FolderItem = GetFolderItem(App.Arguments(1))
Dim file As FolderItem = folder.Child("there." + App.Arguments(2))
Dim slack As Integer = Val(App.Arguments(3))
Dim picture As New PictureTQX(side, side, PictureTQX.ImageFormatRGB, 0, folder.Child("storage"))
If Not picture.Valid Then Quit(2)
For i As Integer = 0 To 15
  picture.FillRectRGB(i * side \ 16, i * side \ 16, side \ 3, side \ 5, RGB(255 - i, 16 * i, 100))
Next
Dim before As String = picture.RowStringInFormat(side \ 2, PictureTQX.ImageFormatRGB)
Dim started As Double = Microseconds
file.SaveFrom(picture, 100)
Dim saved As Double = Microseconds
picture.FillRectRGB(&c0A0B0C)
Dim cleared As Double = Microseconds
file.OpenInto(picture)
Dim opened As Double = Microseconds
Dim after As String = picture.RowStringInFormat(side \ 2, PictureTQX.ImageFormatRGB)
If LenB(before) <> LenB(after) Then Quit(3)
For i As Integer = 1 To LenB(before) Step 97
  If Abs(AscB(MidB(before, i, 1)) - AscB(MidB(after, i, 1))) > slack Then Quit(4)
Next
Dim megabytes As Double = picture.TotalSize / 1000000
Print App.Arguments(2) + ": out " + Format(megabytes * 1000000 / (saved - started), "0") + ", in " + Format(megabytes * 1000000 / (opened - cleared), "0") + " MB/s"
)";

class FilesOfMappedPictures : public ImageMemory {
  protected:
    // Never half of the picture, and no more than 100 MB.
    void ExpectSmall(int side, const std::string& extension, int slack) {
        const Cost cost =
            RunScript(directory, kThereAndBack,
                      {std::to_string(side), directory.path().string(), extension, std::to_string(slack)});
        EXPECT_EQ(cost.exitCode, 0) << extension << cost.err;
        EXPECT_LT(cost.megabytes, std::min<std::int64_t>(100, std::int64_t{3} * side * side / 2000000)) << extension;
    }
};

TEST_F(FilesOfMappedPictures, AreNeverHeldWhole) {
    for (const char* extension : {"png", "tif", "bmp", "ppm"}) ExpectSmall(5000, extension, 0);
    ExpectSmall(5000, "jpg", 40);
}

// Only where it was asked for, by the side in pixels: 40000 needs 5 GB of disk and some minutes.
TEST_F(FilesOfMappedPictures, AreNeverHeldWholeHoweverLarge) {
    const char* side = std::getenv("TQX_TEST_HUGE");
    if (!side) GTEST_SKIP() << "set TQX_TEST_HUGE to the side of a picture";
    for (const char* extension : {"png", "tif"}) ExpectSmall(std::atoi(side), extension, 0);
    ExpectSmall(std::atoi(side), "jpg", 40);
}

}  // namespace
}  // namespace host
