// Host pictures of every depth, their masks, and what plug-ins get of them.
#include "host/framework/Picture.h"
#include "platform/Worlds.h"
#include "tests/host/framework/FrameworkTest.h"

namespace host {
namespace {

using PictureTest = FrameworkTest;

constexpr int kDepths[] = {32, 24, 16, 8, 1};

sdk::PictureDescription DescriptionOf(const Ref<Object>& picture) {
    sdk::PictureDescription description{};
    HostFunctionSlot<sdk::klockPictureDescription>::Call(picture.get(), &description);
    HostFunctionSlot<sdk::kunlockPictureDescription>::Call(picture.get());
    return description;
}

Ref<Object> MaskIfAny(const Ref<Object>& picture) {
    return Ref<Object>::Adopt(FromPlugin(HostFunctionSlot<sdk::kREALGetPictureMask>::Call(picture.get(), false, 0, 0)));
}

TEST_F(PictureTest, NewOnesAreWhiteInEveryDepth) {
    for (int depth : kDepths) {
        const auto picture = New("Picture", 5, 3, depth);
        EXPECT_EQ(GetInt(picture, "Width"), 5);
        EXPECT_EQ(GetInt(picture, "Height"), 3);
        EXPECT_EQ(GetInt(picture, "Depth"), depth);
        for (int y = 0; y < 3; ++y)
            for (int x = 0; x < 5; ++x) EXPECT_EQ(PixelOf(picture, x, y), 0xffffffu) << depth;
    }
}

TEST_F(PictureTest, PixelsAreOfTheDepthsPrecision) {
    const struct {
        int depth;
        std::uint32_t color, back;
    } rows[] = {{32, 0x123456, 0x123456}, {24, 0x123456, 0x123456}, {16, 0xff8000, 0xff8400}, {8, 0x336699, 0x336699},
                {8, 0x808080, 0x808080},  {8, 0xfe0102, 0xff0000},  {1, 0x010203, 0x000000},  {1, 0xffff00, 0xffffff}};
    for (const auto& row : rows) {
        const auto picture = New("Picture", 3, 2, row.depth);
        SetPixelOf(picture, 1, 1, row.color);
        EXPECT_NEAR(static_cast<int>(PixelOf(picture, 1, 1) & 255), static_cast<int>(row.back & 255), 6);
        if (row.depth != 8 || row.color != 0x808080) {
            EXPECT_EQ(PixelOf(picture, 1, 1), row.back) << row.depth;
        }
        EXPECT_EQ(PixelOf(picture, 0, 1), 0xffffffu);
        EXPECT_EQ(PixelOf(picture, 2, 1), 0xffffffu);
    }
}

TEST_F(PictureTest, SizesAndDepthsThatCantBeRaise) {
    for (auto [width, height] : {std::pair{0, 1}, {1, 0}, {-1, 5}, {INT32_MIN, INT32_MIN}}) {
        New("Picture", width, height, 32);
        EXPECT_EQ(RaisedClass(), "OutOfBoundsException");
        EXPECT_FALSE(ObjectOf("NewPicture", width, height, 32));
    }
    New("Picture", 1, 1, 12);
    EXPECT_EQ(RaisedClass(), "UnsupportedFormatException");
    New("Picture", INT32_MAX, 2, 32);
    EXPECT_EQ(RaisedClass(), "OutOfMemoryException");
    EXPECT_FALSE(ObjectOf("NewPicture", INT32_MAX, INT32_MAX, 8));
    EXPECT_EQ(GetInt(ObjectOf("NewPicture", 4, 4), "Depth"), 32);
}

TEST_F(PictureTest, OfTwoGigabytesIsRefused) {
    EXPECT_FALSE(ObjectOf("NewPicture", 1 << 15, 1 << 14, 32));
    EXPECT_FALSE(ObjectOf("NewPicture", 1, 937593372, 32));
    TakeThrown();
}

TEST_F(PictureTest, SurfaceRaisesOutside) {
    const auto surface = GetObject(New("Picture", 4, 3, 32), "RGBSurface");
    for (auto [x, y] : {std::pair{4, 0}, {0, 3}, {-1, 0}, {0, -1}, {INT32_MAX, INT32_MIN}}) {
        Call(surface, "Pixel", x, y);
        EXPECT_EQ(RaisedClass(), "OutOfBoundsException");
        Assign(surface, "Pixel", {x, y}, Value(sdk::Color{}));
        EXPECT_EQ(RaisedClass(), "OutOfBoundsException");
    }
}

TEST_F(PictureTest, SurfaceKeepsItsPictureAlive) {
    Ref<Object> surface;
    {
        const auto picture = New("Picture", 1, 1, 32);
        surface = GetObject(picture, "RGBSurface");
    }
    EXPECT_EQ(Call(surface, "Pixel", 0, 0).ToInt64(), 0xffffff);
}

// --- Masks ----------------------------------------------------------------------------------

TEST_F(PictureTest, AskingForTheMaskMakesAWhiteOne) {
    const auto picture = New("Picture", 4, 3, 32);
    EXPECT_FALSE(GetBool(picture, "HasMask"));
    EXPECT_FALSE(MaskIfAny(picture));
    const auto mask = GetObject(picture, "Mask");
    EXPECT_EQ(GetInt(mask, "Width"), 4);
    EXPECT_EQ(GetInt(mask, "Height"), 3);
    EXPECT_EQ(PixelOf(mask, 3, 2), 0xffffffu);
    EXPECT_EQ(GetObject(picture, "Mask"), mask);
    EXPECT_EQ(MaskIfAny(picture), mask);
    EXPECT_TRUE(GetBool(picture, "HasMask"));
}

TEST_F(PictureTest, AMaskCanBeMadeInAnySize) {
    const auto picture = New("Picture", 4, 3, 32);
    const auto make = [&](int width, int height) {
        return Ref<Object>::Adopt(
            FromPlugin(HostFunctionSlot<sdk::kREALGetPictureMask>::Call(picture.get(), true, width, height)));
    };
    EXPECT_FALSE(make(-1, 5));
    EXPECT_FALSE(GetBool(picture, "HasMask"));
    const auto mask = make(10, 2);
    EXPECT_EQ(GetInt(mask, "Width"), 10);
    EXPECT_EQ(make(1, 1), mask);
}

TEST_F(PictureTest, AssignedMasksAreCopies) {
    const auto picture = New("Picture", 2, 2, 32), mask = New("Picture", 2, 2, 8);
    SetPixelOf(mask, 0, 0, 0);
    Set(picture, "Mask", Value(mask));
    SetPixelOf(mask, 1, 1, 0);
    EXPECT_EQ(PixelOf(GetObject(picture, "Mask"), 0, 0), 0u);
    EXPECT_EQ(PixelOf(GetObject(picture, "Mask"), 1, 1), 0xffffffu);
    EXPECT_EQ(GetInt(GetObject(picture, "Mask"), "Depth"), 8);
    Set(picture, "Mask", Value(picture));  // no circle
    Set(picture, "Mask", nullptr);
    EXPECT_FALSE(GetBool(picture, "HasMask"));
}

// --- What plug-ins see ------------------------------------------------------------------------

TEST_F(PictureTest, DescriptionShowsTheWorldOfDepthsThatHaveOne) {
    for (int depth : kDepths) {
        const auto picture = New("Picture", 5, 3, depth);
        const auto description = DescriptionOf(picture);
        const bool hasWorld = depth == 32 || depth == 24 || depth == 8;
        EXPECT_EQ(description.kind, hasWorld ? sdk::kPictureKindWorld : sdk::kPictureKindNone) << depth;
        EXPECT_EQ(description.width, 5);
        EXPECT_EQ(description.height, 3);
        if (!hasWorld) continue;
        const platform::PixMap* map = platform::GetGWorldPixMap(description.world);
        EXPECT_EQ(platform::GetPixDepth(map), depth);
        EXPECT_GE(platform::GetPixRowBytes(map), 5 * depth / 8);
    }
}

TEST_F(PictureTest, WorldOfDepth32IsUnusedRedGreenBlue) {
    const auto picture = New("Picture", 2, 2, 32);
    SetPixelOf(picture, 1, 1, 0x112233);
    platform::PixMap* map = platform::GetGWorldPixMap(DescriptionOf(picture).world);
    const std::uint8_t* pixel = map->baseAddress + map->rowBytes + 4;
    EXPECT_EQ(std::vector<int>(pixel, pixel + 4), (std::vector<int>{0, 0x11, 0x22, 0x33}));
    map->baseAddress[0] = 77;
    SetPixelOf(picture, 0, 0, 0);
    EXPECT_EQ(map->baseAddress[0], 77);
}

TEST_F(PictureTest, LocksAndUnlocksAreCounted) {
    const auto picture = New("Picture", 1, 1, 32);
    sdk::PictureDescription description;
    HostFunctionSlot<sdk::klockPictureDescription>::Call(picture.get(), &description);
    HostFunctionSlot<sdk::klockPictureDescription>::Call(picture.get(), &description);
    EXPECT_EQ(PictureLockCount(picture.get()), 2);
    HostFunctionSlot<sdk::kunlockPictureDescription>::Call(picture.get());
    HostFunctionSlot<sdk::kunlockPictureDescription>::Call(picture.get());
    EXPECT_EQ(PictureLockCount(picture.get()), 0);
    const std::int64_t before = ExcessUnlockCount();
    HostFunctionSlot<sdk::kunlockPictureDescription>::Call(picture.get());
    EXPECT_EQ(ExcessUnlockCount(), before + 1);
    EXPECT_EQ(PictureLockCount(picture.get()), 0);
}

TEST_F(PictureTest, HostFunctionsSurviveNilAndOtherObjects) {
    const auto other = New("MemoryBlock", 1);
    for (Object* object : {static_cast<Object*>(nullptr), other.get()}) {
        sdk::PictureDescription description{sdk::kPictureKindWorld, nullptr, 5, 5};
        HostFunctionSlot<sdk::klockPictureDescription>::Call(object, &description);
        EXPECT_EQ(description.kind, sdk::kPictureKindNone);
        HostFunctionSlot<sdk::kunlockPictureDescription>::Call(object);
        EXPECT_EQ(HostFunctionSlot<sdk::kREALGetPictureMask>::Call(object, true, 1, 1), nullptr);
        EXPECT_EQ(HostFunctionSlot<sdk::kpluginPictureGraphicsGetter>::Call(object), nullptr);
    }
    EXPECT_EQ(HostFunctionSlot<sdk::kREALBuildPictureFromGWorld>::Call(nullptr, true), nullptr);
}

TEST_F(PictureTest, AWorldHandedOverIsThePicturesOwn) {
    sdk::GWorld* world = platform::NewGWorld(32, 3, 2);
    world->pixMap.baseAddress[1] = 9;
    const auto picture =
        Ref<Object>::Adopt(FromPlugin(HostFunctionSlot<sdk::kREALBuildPictureFromGWorld>::Call(world, true)));
    EXPECT_EQ(DescriptionOf(picture).world, world);
    EXPECT_EQ(PixelOf(picture, 0, 0), 0x090000u);
}

TEST_F(PictureTest, AWorldNotHandedOverIsCopied) {
    for (int depth : {32, 24, 8}) {
        sdk::GWorld* world = platform::NewGWorld(depth, 3, 2, platform::GetCTable(40));
        world->pixMap.baseAddress[depth == 32 ? 1 : 0] = 9;
        const auto picture =
            Ref<Object>::Adopt(FromPlugin(HostFunctionSlot<sdk::kREALBuildPictureFromGWorld>::Call(world, false)));
        world->pixMap.baseAddress[depth == 32 ? 1 : 0] = 10;
        platform::DisposeGWorld(world);
        EXPECT_EQ(PixelOf(picture, 0, 0), depth == 8 ? 0x090909u : 0x090000u);
    }
}

TEST_F(PictureTest, NewPictureGivesNilForWhatCantBe) {
    EXPECT_EQ(HostFunctionSlot<sdk::knewPicture>::Call(0, 1, 32), nullptr);
    EXPECT_EQ(HostFunctionSlot<sdk::knewPicture>::Call(1, 1, 31), nullptr);
    EXPECT_EQ(HostFunctionSlot<sdk::knewPicture>::Call(INT32_MAX, INT32_MAX, 32), nullptr);
}

// --- Files ----------------------------------------------------------------------------------

TEST_F(PictureTest, TransparencyBecomesTheMaskAndAlphaAgain) {
    const TestImage image{2, 1, PixelLayout::Rgba, {10, 20, 30, 0, 40, 50, 60, 200}};
    WriteImage(directory.Path("a.png"), image);
    const auto file = ObjectOf("GetFolderItem", directory.Path("a.png"));
    const auto picture = Ref<Object>::Share(CallShared("Picture", "Open", file).object());
    EXPECT_EQ(PixelOf(picture, 0, 0), 0x0a141eu);
    EXPECT_EQ(PixelOf(GetObject(picture, "Mask"), 0, 0), 0xffffffu);
    EXPECT_EQ(PixelOf(GetObject(picture, "Mask"), 1, 0), 0x373737u);
    Call(ObjectOf("GetFolderItem", directory.Path("b.png")), "SaveAsPicture", picture);
    EXPECT_EQ(ReadImage(directory.Path("b.png")), image);
}

TEST_F(PictureTest, WithoutTransparencyThereIsNoMask) {
    WriteImage(directory.Path("a.png"), MakeTestImage(3, 3, PixelLayout::Gray));
    const auto picture = CallObject(ObjectOf("GetFolderItem", directory.Path("a.png")), "OpenAsPicture");
    EXPECT_FALSE(GetBool(picture, "HasMask"));
    EXPECT_EQ(GetInt(picture, "Depth"), 32);
}

TEST_F(PictureTest, AreClearOutsideASmallerMask) {
    const auto picture = New("Picture", 3, 2, 32), mask = New("Picture", 1, 1, 32);
    SetPixelOf(mask, 0, 0, 0);
    Set(picture, "Mask", Value(mask));
    Call(picture, "Save", ObjectOf("GetFolderItem", directory.Path("a.png")));
    const TestImage image = ReadImage(directory.Path("a.png"));
    EXPECT_EQ(image.At(0, 0, 3), 255);
    EXPECT_EQ(image.At(1, 0, 3), 0);
    EXPECT_EQ(image.At(0, 1, 3), 0);
}

TEST_F(PictureTest, SaveTakesAFormatAndAQuality) {
    const auto picture = New("Picture", 32, 32, 32);
    for (int i = 0; i < 32; ++i) SetPixelOf(picture, i, i * 7 % 32, 0x2040ff);
    const auto file = ObjectOf("GetFolderItem", directory.Path("plain"));
    Call(picture, "Save", file, static_cast<int>(support::ConstantOf("Picture", "SaveAsPNG")));
    EXPECT_EQ(ImageReader(directory.Path("plain")).Info().format, ImageFileFormat::Png);
    const int jpeg = static_cast<int>(support::ConstantOf("Picture", "SaveAsJPEG"));
    Call(picture, "Save", file, jpeg, 95);
    EXPECT_EQ(ImageReader(directory.Path("plain")).Info().format, ImageFileFormat::Jpeg);
    const std::int64_t good = GetInt(file, "Length");
    Call(picture, "Save", file, jpeg, 5);
    EXPECT_LT(GetInt(file, "Length"), good);
    Call(picture, "Save", file, 99);
    EXPECT_EQ(RaisedClass(), "UnsupportedFormatException");
    Call(picture, "Save", file);  // no extension to go by
    EXPECT_EQ(RaisedClass(), "UnsupportedFormatException");
    Call(picture, "Save", nullptr);
    EXPECT_EQ(RaisedClass(), "NilObjectException");
}

TEST_F(PictureTest, DamagedAndMissingFilesRaiseWithTheirName) {
    support::Bytes bytes(100, 65);
    WriteBytes(directory.Path("bad.png"), "\x89PNG\r\n\x1a\nrubbish");
    Call(ObjectOf("GetFolderItem", directory.Path("bad.png")), "OpenAsPicture");
    const auto thrown = TakeThrown();
    EXPECT_EQ(thrown.className, "UnsupportedFormatException");
    EXPECT_NE(thrown.message.find("bad.png"), std::string::npos);
    Call(ObjectOf("GetFolderItem", directory.Path("none.png")), "OpenAsPicture");
    EXPECT_EQ(RaisedClass(), "IOException");
    CallShared("Picture", "Open", nullptr);
    EXPECT_EQ(RaisedClass(), "NilObjectException");
    Call(ObjectOf("GetFolderItem", directory.Path("a.png")), "SaveAsPicture", nullptr);
    EXPECT_EQ(RaisedClass(), "NilObjectException");
}

// --- GWorldTQX ------------------------------------------------------------------------------

TEST_F(PictureTest, WorldObjectShowsAndDisposesOfItsWorld) {
    const auto object = New("GWorldTQX");
    EXPECT_EQ(GetInt(object, "Width"), 0);
    Call(object, "Byte", 0);
    EXPECT_EQ(RaisedClass(), "OutOfBoundsException");
    auto* data = DataAt<sdk::GWorldTQXData>(object.get(), sdk::kGWorldTQXDataOffset);
    *data = {platform::NewGWorld(24, 3, 2), true};
    data->world->pixMap.baseAddress[data->world->pixMap.rowBytes] = 9;
    EXPECT_EQ(GetInt(object, "Width"), 3);
    EXPECT_EQ(GetInt(object, "Height"), 2);
    EXPECT_EQ(GetInt(object, "Depth"), 24);
    const int rowBytes = static_cast<int>(GetInt(object, "RowBytes"));
    EXPECT_EQ(Call(object, "Byte", rowBytes).ToInt32(), 9);
    for (int offset : {-1, 2 * rowBytes, INT32_MAX}) {
        Call(object, "Byte", offset);
        EXPECT_EQ(RaisedClass(), "OutOfBoundsException");
    }
}

}  // namespace
}  // namespace host
