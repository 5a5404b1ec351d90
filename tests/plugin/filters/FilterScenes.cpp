// Sources and destinations made in every way in which they can meet, and read as a reference sees
// them.
#include "tests/plugin/filters/FilterScenes.h"

#include <algorithm>

namespace scenes {

using namespace support;

Pixels::Pixels(const Ref<Object>& picture)
    : width(static_cast<int>(GetInt(picture, "Width"))),
      height(static_cast<int>(GetInt(picture, "Height"))),
      pixelSize(static_cast<int>(GetInt(picture, "PixelSize"))),
      rowSize(static_cast<int>(GetInt(picture, "RowSize"))),
      format(static_cast<int>(GetInt(picture, "ImageFormat"))),
      isGray(GetBool(picture, "IsGray")),
      isRGB(GetBool(picture, "IsRGB")),
      hasAlpha(GetBool(picture, "HasAlpha")) {
    const char* const names[] = {"RedOffset", "GreenOffset", "BlueOffset", "GrayOffset", "AlphaOffset"};
    for (std::size_t i = 0; i < offset.size(); ++i) offset[i] = static_cast<int>(GetInt(picture, names[i]));
    for (int y = 0; y < height; ++y) rows.push_back(RowAddress(picture, y));
    if (isGray)
        channels = {kGray};
    else if (isRGB)
        channels = {kRed, kGreen, kBlue};
    if (hasAlpha && !channels.empty()) channels.push_back(kAlpha);
}

std::uint8_t* Pixels::At(std::int64_t x, std::int64_t y, Channel channel) const {
    if (!Has(x, y)) return nullptr;
    return rows[static_cast<std::size_t>(y)] + x * pixelSize + offset[channel];
}

namespace {

// Padding of the rows included.
Ref<Object> RandomPicture(int width, int height, int format, std::uint64_t seed) {
    const auto picture = New("PictureTQX", width, height, format);
    const auto rowSize = static_cast<std::size_t>(GetInt(picture, "RowSize"));
    Random random(seed);
    for (int y = 0; y < height; ++y) {
        const Bytes bytes = random.NextBytes(rowSize);
        std::copy(bytes.begin(), bytes.end(), RowAddress(picture, y));
    }
    return picture;
}

// A memory block of random bytes and a picture around it.
WrappedPicture RandomWrapped(int width, int height, int format, int rowSize, std::size_t size, std::uint64_t seed) {
    WrappedPicture wrapped;
    wrapped.block = MakeBlock(Random(seed).NextBytes(size));
    wrapped.picture = New("PictureTQX", wrapped.block, width, height, format, rowSize);
    return wrapped;
}

using View = std::function<Ref<Object>(const Ref<Object>&)>;

Ref<Object> Itself(const Ref<Object>& picture) { return picture; }

View Clip(int x, int y, int width, int height) {
    return [=](const Ref<Object>& picture) { return CallObject(picture, "ClipImage", x, y, width, height); };
}

View Method(const char* name) {
    return [name](const Ref<Object>& picture) { return CallObject(picture, name); };
}

View Then(const View& first, const View& second) {
    return [=](const Ref<Object>& picture) { return second(first(picture)); };
}

struct SceneList {
    std::string prefix;
    std::vector<FilterScene> scenes;

    // Source and destination are views of one picture.
    void Shared(const std::string& name, int width, int height, int format, const View& source,
                const View& destination) {
        Add(name, [=] {
            const auto picture = RandomPicture(width, height, format, 7);
            return Pictures{source(picture), destination(picture), {picture}};
        });
    }

    // They are views of two pictures.
    void Apart(const std::string& name, int width, int height, int format, const View& source, const View& destination,
               int toWidth, int toHeight, int toFormat) {
        Add(name, [=] {
            const auto from = RandomPicture(width, height, format, 8);
            const auto to = RandomPicture(toWidth, toHeight, toFormat, 9);
            Pictures pictures{source(from), destination(to), {from, to}};
            if (!GetObject(pictures.destination, "Parent"))
                pictures.storage.push_back(pictures.destination);  // a clone
            return pictures;
        });
    }

    void IntoNew(const std::string& name, int width, int height, int format, const View& source) {
        Add(name, [=] {
            const auto from = RandomPicture(width, height, format, 10);
            return Pictures{source(from), nullptr, {from}};
        });
    }

    void Add(const std::string& name, std::function<Pictures()> make) {
        scenes.push_back({prefix + " " + name, std::move(make)});
    }
};

void AddViews(SceneList& list, const Format& format, int w, int h) {
    list.IntoNew("into new", w, h, format.code, Itself);
    list.IntoNew("clip into new", w, h, format.code, Clip(2, 1, w - 3, h - 2));
    list.IntoNew("mirrored into new", w, h, format.code, Method("MirroredView"));
    list.IntoNew("clone of a clip, rows missing", w, h, format.code, Then(Clip(1, 2, w - 1, h - 2), Method("Clone")));
    list.Apart("into given", w, h, format.code, Itself, Itself, w, h, format.code);
    list.Apart("into smaller", w, h, format.code, Itself, Itself, w - 2, h - 3, format.code);
    list.Apart("into larger", w, h, format.code, Itself, Itself, w + 2, h + 3, format.code);
    list.Apart("into clip", w, h, format.code, Itself, Clip(3, 2, w, h), w + 4, h + 4, format.code);
    list.Apart("into clone of a clip", w, h - 2, format.code, Itself, Then(Clip(1, 2, w, h - 2), Method("Clone")), w, h,
               format.code);
}

void AddSharing(SceneList& list, const Format& format, int w, int h) {
    list.Shared("in place", w, h, format.code, Itself, Itself);
    list.Shared("in place through a whole clip", w, h, format.code, Itself, Method("ClipImage"));
    list.Shared("clip in place", w, h, format.code, Clip(2, 1, w - 3, h - 2), Clip(2, 1, w - 3, h - 2));
    list.Shared("mirrored in place", w, h, format.code, Method("MirroredView"), Method("MirroredView"));
    list.Shared("onto its own left part", w, h, format.code, Itself, Clip(0, 0, w - 2, h));
    list.Shared("onto its own upper part", w, h, format.code, Itself, Clip(0, 0, w, h - 2));
    list.Shared("left part onto the whole", w, h, format.code, Clip(0, 0, w - 2, h), Itself);
    list.Shared("onto its mirror", w, h, format.code, Itself, Method("MirroredView"));
    list.Shared("shifted right and down", w, h, format.code, Clip(0, 0, w - 1, h - 1), Clip(1, 1, w - 1, h - 1));
    list.Shared("shifted left and up", w, h, format.code, Clip(1, 1, w - 1, h - 1), Clip(0, 0, w - 1, h - 1));
    list.Shared("shifted right", w, h, format.code, Clip(0, 0, w - 2, h), Clip(2, 0, w - 2, h));
    list.Shared("shifted left", w, h, format.code, Clip(2, 0, w - 2, h), Clip(0, 0, w - 2, h));
    list.Shared("left half onto right half", 2 * w, h, format.code, Clip(0, 0, w, h), Clip(w, 0, w, h));
}

void AddChannelViews(SceneList& list, const Format& format, int w, int h) {
    if (format.isRGB) {
        list.IntoNew("RGB view into new", w, h, format.code, Method("RGBChannels"));
        list.Shared("RGB view in place", w, h, format.code, Method("RGBChannels"), Method("RGBChannels"));
        list.IntoNew("clip of RGB view, one byte for all", w, h, format.code,
                     Then(Method("RGBChannels"), Clip(2, 1, w - 3, h - 2)));
        list.Shared("clip of RGB view in place", w, h, format.code, Then(Method("RGBChannels"), Method("ClipImage")),
                    Then(Method("RGBChannels"), Method("ClipImage")));
        list.IntoNew("green into new", w, h, format.code, Method("GreenChannel"));
        list.Shared("blue in place", w, h, format.code, Method("BlueChannel"), Method("BlueChannel"));
        list.Shared("red onto green", w, h, format.code, Method("RedChannel"), Method("GreenChannel"));
        list.Shared("picture onto its red", w, h, format.code, Itself, Method("RedChannel"));
        list.Shared("green onto its picture", w, h, format.code, Method("GreenChannel"), Itself);
        list.Shared("picture onto its RGB view", w, h, format.code, Itself, Method("RGBChannels"));
    } else {
        list.Shared("gray in place", w, h, format.code, Method("GrayChannel"), Method("GrayChannel"));
        list.Shared("picture onto its gray", w, h, format.code, Itself, Method("GrayChannel"));
    }
    if (format.hasAlpha) {
        list.IntoNew("alpha into new", w, h, format.code, Method("AlphaChannel"));
        list.Shared("alpha in place", w, h, format.code, Method("AlphaChannel"), Method("AlphaChannel"));
        list.Shared("picture onto its alpha", w, h, format.code, Itself, Method("AlphaChannel"));
    }
}

// Pictures around one memory block, in layouts of the caller's own making.
void AddBlocks(SceneList& list, const Format& format, int w, int h) {
    const int bytes = w * format.pixelSize;
    const auto size = static_cast<std::size_t>(bytes * (h + 2));
    const auto shared = [=](int sourceRowSize, int destinationRowSize, int destinationFormat) {
        return [=] {
            const auto block = MakeBlock(Random(11).NextBytes(size));
            return Pictures{New("PictureTQX", block, w, h, format.code, sourceRowSize),
                            New("PictureTQX", block, w, h, destinationFormat, destinationRowSize),
                            {block}};
        };
    };
    list.Add("tight rows in place", shared(bytes, bytes, format.code));
    list.Add("rows that overlap in place", shared(bytes - format.pixelSize, bytes - format.pixelSize, format.code));
    list.Add("the same bytes with shorter rows", shared(bytes, bytes - format.pixelSize, format.code));
    const auto apart = [=](int sourceRowSize, int destinationRowSize) {
        return [=] {
            const auto from = RandomWrapped(w, h, format.code, sourceRowSize, size, 12);
            const auto to = RandomWrapped(w, h, format.code, destinationRowSize, size, 13);
            return Pictures{from.picture, to.picture, {from.block, to.block}};
        };
    };
    list.Add("from rows that overlap", apart(bytes - 1, bytes + 1));
    list.Add("into rows that overlap", apart(bytes, bytes - 1));
    list.Add("into one row", apart(bytes, 0));
}

}  // namespace

FilterScene Plain(int format, int width, int height, std::uint64_t seed) {
    return {std::string(kFormats[format].name) + " " + std::to_string(width) + "x" + std::to_string(height), [=] {
                const auto picture = RandomPicture(width, height, format, seed);
                return Pictures{picture, nullptr, {picture}};
            }};
}

std::vector<FilterScene> ScenesOf(const Format& format, int width, int height) {
    SceneList list{format.name, {}};
    AddViews(list, format, width, height);
    AddSharing(list, format, width, height);
    AddChannelViews(list, format, width, height);
    AddBlocks(list, format, width, height);
    return list.scenes;
}

std::vector<FilterScene> ScenesAcrossFormats(const Format& format) {
    SceneList list{format.name, {}};
    for (const Format& to : kFormats) {
        if (to.code == 0) continue;
        list.Apart(std::string("into ") + to.name, 7, 4, format.code, Itself, Itself, 7, 4, to.code);
        if (to.pixelSize < 16)
            list.Apart(std::string("into clip of ") + to.name, 7, 4, format.code, Itself, Clip(2, 1, 7, 4), 9, 5,
                       to.code);
    }
    return list.scenes;
}

std::vector<FilterScene> AllScenes() {
    std::vector<FilterScene> all;
    for (const Format& format : ChannelFormats())
        for (const auto& part : {ScenesOf(format, 11, 8), ScenesAcrossFormats(format)})
            all.insert(all.end(), part.begin(), part.end());
    return all;
}

Size SameSize(const Pixels& source) { return {source.width, source.height}; }

namespace {

// All bytes of a picture's storage, padding included, or of a memory block.
Bytes BytesOf(const Ref<Object>& storage) {
    if (!storage->type->FindProperty("RowSize")) return BlockBytes(storage);
    const std::int64_t size = GetInt(storage, "RowSize") * GetInt(storage, "Height");
    return size > 0 ? BlockBytes(GetObject(storage, "Memory"), static_cast<std::size_t>(size)) : Bytes();
}

// In a scene without a destination the reference's is what the filter should make.
void AddReferenceDestination(Pictures& pictures, const SizeOfResult& sizeOfResult) {
    if (pictures.destination) return;
    const Pixels source(pictures.source);
    const Size size = sizeOfResult(source);
    pictures.destination = New("PictureTQX", size.width, size.height, source.format);
    pictures.storage.push_back(pictures.destination);
}

}  // namespace

::testing::AssertionResult SameStorage(const Pictures& actual, const Pictures& expected) {
    for (std::size_t i = 0; i < actual.storage.size(); ++i) {
        const bool isBlock = !actual.storage[i]->type->FindProperty("RowSize");
        const Pixels layout(isBlock ? actual.source : actual.storage[i]);
        const auto same = SameBytes(BytesOf(actual.storage[i]), BytesOf(expected.storage[i]), layout.rowSize,
                                    std::max(layout.pixelSize, 1));
        if (!same) return ::testing::AssertionFailure() << "storage " << i << ": " << same.message();
    }
    return ::testing::AssertionSuccess();
}

void ExpectScene(const FilterScene& scene, const Filter& filter, const Reference& reference,
                 const SizeOfResult& sizeOfResult) {
    SCOPED_TRACE(scene.name);
    Pictures actual = scene.make();
    Pictures expected = scene.make();
    const auto result = filter(actual.source, actual.destination);
    ASSERT_TRUE(result);
    if (actual.destination) {
        EXPECT_EQ(result, actual.destination);
    } else {
        actual.storage.push_back(result);
    }
    AddReferenceDestination(expected, sizeOfResult);
    reference(Pixels(expected.source), Pixels(expected.destination));
    const Pixels made(result), wanted(expected.destination);
    EXPECT_EQ(made.width, wanted.width);
    EXPECT_EQ(made.height, wanted.height);
    EXPECT_EQ(made.format, wanted.format);
    EXPECT_TRUE(SameStorage(actual, expected));
}

void ExpectScenes(const std::vector<FilterScene>& all, const Filter& filter, const Reference& reference,
                  const SizeOfResult& sizeOfResult) {
    for (const FilterScene& scene : all) {
        ExpectScene(scene, filter, reference, sizeOfResult);
        if (::testing::Test::HasFailure()) return;
    }
}

Reference EachPixel(std::function<int(int value, Channel channel, int x, int y)> value) {
    return InPixelOrder([value = std::move(value)](const Pixels& source, Channel channel, int x, int y) {
        return value(source.Value(x, y, channel), channel, x, y);
    });
}

Reference InPixelOrder(std::function<int(const Pixels& source, Channel channel, int x, int y)> value) {
    return [value = std::move(value)](const Pixels& source, const Pixels& destination) {
        for (int y = 0; y < source.height; ++y)
            for (int x = 0; x < source.width; ++x) {
                if (!source.Has(x, y) || !destination.Has(x, y)) continue;
                std::vector<int> values;
                for (const Channel channel : source.channels) values.push_back(value(source, channel, x, y));
                for (std::size_t c = 0; c < values.size(); ++c)
                    *destination.At(x, y, source.channels[c]) = static_cast<std::uint8_t>(values[c]);
            }
    };
}

}  // namespace scenes
