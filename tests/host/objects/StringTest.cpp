// Strings of every encoding, and what a shortage of memory leaves of them.
#include <gtest/gtest.h>

#include <algorithm>

#include "host/objects/String.h"
#include "tests/support/Interpose.h"

namespace {

using host::Bytes;
using host::ConvertEncoding;
using host::MakeString;
using host::Ref;
using host::String;
using sdk::Encoding;
using namespace std::literals;

// The bytes of code units in the machine's order.
template <class Unit>
std::string Units(std::basic_string_view<Unit> text) {
    return {reinterpret_cast<const char*>(text.data()), text.size() * sizeof(Unit)};
}

std::string Converted(std::string_view bytes, Encoding from, Encoding to) {
    return std::string(Bytes(ConvertEncoding(MakeString(bytes, from), to)));
}

TEST(String, IsNeverEmptyForWantOfMemory) {
    const std::string bytes(100'000, 'x');
    {
        const support::FailingAllocations failing(50'000);
        EXPECT_THROW(MakeString(bytes), std::bad_alloc);
        EXPECT_THROW(host::JoinStrings(bytes, bytes, Encoding::Utf8), std::bad_alloc);
    }
    // One byte more than an Integer counts; the bytes are not looked at.
    EXPECT_THROW(host::JoinStrings({bytes.data(), INT32_MAX}, "x", Encoding::Utf8), std::bad_alloc);
}

TEST(String, GrowsInItsOwnMemoryWhileThereIsRoom) {
    Ref<String> text = host::JoinWithRoom("abc", "def", Encoding::Utf8);
    const auto* const data = text->data;
    EXPECT_TRUE(host::AppendInPlace(*text, "ghijkl"));
    EXPECT_EQ(text->data, data);
    EXPECT_EQ(Bytes(text), "abcdefghijkl");
    EXPECT_FALSE(host::AppendInPlace(*text, "m")) << "there is room for as much again, and no more";
    EXPECT_EQ(Bytes(text), "abcdefghijkl");
    EXPECT_FALSE(host::AppendInPlace(*MakeString("x"), "y"));
}

TEST(String, IsNilWhenEmpty) {
    EXPECT_FALSE(MakeString(""));
    EXPECT_EQ(Bytes(Ref<String>()), "");
    EXPECT_EQ(host::EncodingOf(nullptr), Encoding::Utf8);
    EXPECT_FALSE(ConvertEncoding(nullptr, Encoding::Utf16));
}

TEST(String, KeepsACopyOfItsBytes) {
    std::string bytes = "a\0b"s;
    const auto string = MakeString(bytes);
    bytes[0] = 'x';
    EXPECT_EQ(Bytes(string), "a\0b"sv);
    EXPECT_EQ(string->length, 3);
    EXPECT_EQ(string->data[1], 0);
}

TEST(String, IsCounted) {
    const std::int64_t before = host::LiveStringCount();
    {
        const auto one = MakeString("counted");
        const auto two = one;
        EXPECT_EQ(one->references, 2);
        EXPECT_EQ(host::LiveStringCount(), before + 1);
        const auto three = Ref<String>::Adopt(Ref<String>(one).Detach());
        EXPECT_EQ(one->references, 3);
    }
    EXPECT_EQ(host::LiveStringCount(), before);
}

TEST(String, OfOneCharacterIsShared) {
    const std::int64_t before = host::LiveStringCount();
    const auto e = host::SharedCharacter('e');
    EXPECT_EQ(Bytes(e), "e");
    EXPECT_EQ(e->encoding, Encoding::Utf8);
    EXPECT_EQ(host::SharedCharacter('e'), e);
    EXPECT_EQ(Bytes(host::SharedCharacter('f')), "f");
    EXPECT_GT(e->references, 1) << "nobody may add to it in place";
    EXPECT_EQ(host::LiveStringCount(), before);
}

// Plug-ins may set the encoding of what they are given, and write where they should not.
TEST(String, OfOneCharacterIsMadeAnewOnceAPluginChangedIt) {
    const auto q = host::SharedCharacter('q');
    host::SetEncoding(*q, Encoding::None);
    EXPECT_EQ(host::SharedCharacter('q')->encoding, Encoding::Utf8);
    const auto r = host::SharedCharacter('r');
    const_cast<std::uint8_t*>(r->data)[0] = 's';
    EXPECT_EQ(Bytes(host::SharedCharacter('r')), "r");
}

TEST(String, OfOneCharacterOutlivesReferencesThatAreGivenUpTwice) {
    String* const t = host::SharedCharacter('t').get();
    for (int i = 0; i < 100; ++i) host::Release(t);
    EXPECT_EQ(host::SharedCharacter('t').get(), t);
    EXPECT_EQ(Bytes(t), "t");
}

TEST(String, MayBeWrittenAfterItIsMade) {
    char* bytes = nullptr;
    const auto text = host::MakeBlankString(3, Encoding::Ascii, bytes);
    std::copy_n("abc", 3, bytes);
    EXPECT_EQ(Bytes(text), "abc");
    EXPECT_EQ(text->encoding, Encoding::Ascii);
    EXPECT_FALSE(host::MakeBlankString(0, Encoding::Utf8, bytes));
    EXPECT_THROW(host::MakeBlankString(std::size_t{INT32_MAX} + 1, Encoding::Utf8, bytes), std::bad_alloc);
}

TEST(String, ConvertsBetweenAllEncodings) {
    const std::string utf8 = "aé€😀";
    const std::string utf16 = Units(u"aé€😀"sv);
    const std::string utf32 = Units(U"aé€😀"sv);
    EXPECT_EQ(Converted(utf8, Encoding::Utf8, Encoding::Utf16), utf16);
    EXPECT_EQ(Converted(utf8, Encoding::Utf8, Encoding::Utf32), utf32);
    EXPECT_EQ(Converted(utf16, Encoding::Utf16, Encoding::Utf8), utf8);
    EXPECT_EQ(Converted(utf16, Encoding::Utf16, Encoding::Utf32), utf32);
    EXPECT_EQ(Converted(utf32, Encoding::Utf32, Encoding::Utf8), utf8);
    EXPECT_EQ(Converted(utf32, Encoding::Utf32, Encoding::Utf16), utf16);
    EXPECT_EQ(Converted(utf8, Encoding::Utf8, Encoding::Ascii), "a???");
    EXPECT_EQ(Converted("plain", Encoding::Ascii, Encoding::Utf16), Units(u"plain"sv));
}

// Every character there is, there and back.
TEST(String, ConvertsEveryCharacter) {
    std::u32string all;
    for (char32_t c = 1; c <= 0x10FFFF; ++c)
        if ((c < 0xD800 || c >= 0xE000) && c != 0xFEFF) all += c;
    const std::string utf32 = Units(std::u32string_view(all));
    const std::string utf8 = Converted(utf32, Encoding::Utf32, Encoding::Utf8);
    const std::string utf16 = Converted(utf8, Encoding::Utf8, Encoding::Utf16);
    EXPECT_TRUE(Converted(utf16, Encoding::Utf16, Encoding::Utf32) == utf32);
}

TEST(String, ObeysAByteOrderMark) {
    EXPECT_EQ(Converted("\xFE\xFF\x00\x41\x20\xAC"sv, Encoding::Utf16, Encoding::Utf8), "A€");
    EXPECT_EQ(Converted("\xFF\xFE\x41\x00\xAC\x20"sv, Encoding::Utf16, Encoding::Utf8), "A€");
    EXPECT_EQ(Converted("\x00\x00\xFE\xFF\x00\x00\x00\x41"sv, Encoding::Utf32, Encoding::Utf8), "A");
}

TEST(String, ReplacesWhatItCantRead) {
    EXPECT_EQ(Converted("a\xFF\xC3"sv, Encoding::Utf8, Encoding::Utf32), Units(U"a\uFFFD\uFFFD"sv));
    EXPECT_EQ(Converted("\xC0\x80"sv, Encoding::Utf8, Encoding::Utf32), Units(U"\uFFFD\uFFFD"sv)) << "overlong";
    EXPECT_EQ(Converted("\xED\xA0\x80"sv, Encoding::Utf8, Encoding::Utf32), Units(U"\uFFFD\uFFFD\uFFFD"sv));
    EXPECT_EQ(Converted("\x00\xD8\x41\x00"sv, Encoding::Utf16, Encoding::Utf8), "\uFFFDA") << "lone surrogate";
    EXPECT_EQ(Converted("\x41\x00\x42"sv, Encoding::Utf16, Encoding::Utf8), "A\uFFFD") << "half a unit";
    EXPECT_EQ(Converted("\x00\x00\x11\x00"sv, Encoding::Utf32, Encoding::Utf8), "\uFFFD") << "above 10FFFF";
}

TEST(String, LeavesBytesWithoutAnEncodingAsTheyAre) {
    EXPECT_EQ(Converted("\xFF\x00z"sv, Encoding::None, Encoding::Utf8), "\xFF\x00z"sv);
    EXPECT_EQ(Converted("\xC3\xA4", Encoding::Utf8, Encoding::None), "\xC3\xA4");
    EXPECT_EQ(ConvertEncoding(MakeString("x", Encoding::None), Encoding::Utf8)->encoding, Encoding::Utf8);
}

TEST(String, SharesAStringThatHasTheEncodingAlready) {
    const auto string = MakeString("same");
    EXPECT_EQ(ConvertEncoding(string, Encoding::Utf8), string);
}

}  // namespace
