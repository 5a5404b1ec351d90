// A mapped picture and a picture around a block over its window share pixels at the same address.
#include <functional>

#include "tests/support/Formats.h"
#include "tests/support/MappedPictures.h"

namespace {

using namespace support;

constexpr int kSide = 24, kGray = 11;

// Changes `destination` from `source`, two pictures around the same pixels.
struct Operation {
    const char* name;
    std::function<void(const Ref<Object>& source, const Ref<Object>& destination)> run;
};

Operation Into(const char* method, const std::vector<Value>& rest = {}) {
    return {method, [=](const auto& source, const auto& destination) {
                std::vector<Value> arguments = {Value(destination)};
                arguments.insert(arguments.end(), rest.begin(), rest.end());
                CallWith(source, method, arguments);
            }};
}

std::vector<Operation> Operations() {
    return {Into("Rotate180"),
            Into("Rotate90slow"),
            Into("Rotate270slow"),
            Into("GammaFilter", {Value(2.0)}),
            Into("BoxBlurFilter", {Value(2.0)}),
            Into("BoxBlurFractionalFilter", {Value(0.4)}),
            Into("EngraveFilter", {Value(-1)}),
            Into("NeonFilter"),
            Into("OilFilter", {Value(16), Value(2)}),
            {"ScaleFast", [](const auto& source,
                             const auto& destination) { Call(destination, "ScaleFast", source, kSide, kSide / 2); }},
            {"UnsharpFilter", [](const auto& source, const auto& destination) {
                 Call(destination, "UnsharpFilter", CallObject(source, "MirroredView"), 0.5, 3);
             }}};
}

class SharedWindow : public PluginTest {
  protected:
    static Ref<Object> Around(const Ref<Object>& block, std::int64_t rowSize) {
        return New("PictureTQX", block, kSide, kSide, kGray, static_cast<int>(rowSize));
    }
};

TEST_F(SharedWindow, GivesWhatTwoPicturesAroundOneBlockGive) {
    for (const Operation& operation : Operations())
        for (const bool mappedIsSource : {false, true}) {
            SCOPED_TRACE(testing::Message()
                         << operation.name << (mappedIsSource ? " from" : " into") << " the mapped one");
            const auto mapped = New("PictureTQX", kSide, kSide, kGray, 0, FolderItemOf(ScratchPath("shared")));
            Set(mapped, "MappingBlockSize", 1 << 20);
            const std::int64_t rowSize = GetInt(mapped, "RowSize");
            const auto window = Around(CallObject(mapped, "RawRow", 0), rowSize);
            const auto block = NewWith("MemoryBlock", {Value(kSide * rowSize)});
            const auto one = Around(block, rowSize), other = Around(block, rowSize);
            FillRandom(window, 7);
            FillRandom(one, 7);
            ASSERT_TRUE(SameBytes(ReadPixels(mapped), ReadPixels(one)));
            const Bytes before = ReadPixels(one);
            operation.run(mappedIsSource ? mapped : window, mappedIsSource ? window : mapped);
            operation.run(one, other);
            EXPECT_TRUE(SameBytes(ReadPixels(mapped), ReadPixels(one)));
            EXPECT_NE(ReadPixels(one), before);
        }
}

}  // namespace
