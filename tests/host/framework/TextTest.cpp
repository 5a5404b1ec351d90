// The functions for text, over every encoding and any position.
#include <cmath>
#include <limits>

#include "host/framework/NumberText.h"
#include "tests/host/framework/FrameworkTest.h"

namespace host {
namespace {

using TextFunctions = FrameworkTest;

// Five characters of 1, 2, 3, 4 and 1 bytes.
constexpr const char* kMixed = "a\xc3\xa4\xe2\x82\xac\xf0\x9f\x98\x80z";

Value InEncoding(std::string_view utf8, sdk::Encoding encoding) {
    return Value(ConvertEncoding(MakeString(utf8), encoding));
}

int Number(std::string_view name, const auto&... arguments) { return Function(name, arguments...).ToInt32(); }

std::vector<std::string> Texts(const Value& array) {
    std::vector<std::string> texts;
    for (const Value& value : array.array()->values) texts.emplace_back(value.text());
    return texts;
}

using List = std::vector<std::string>;

// --- Length and parts -----------------------------------------------------------------------

TEST_F(TextFunctions, LenCountsCharactersAndLenBBytes) {
    EXPECT_EQ(Number("Len", kMixed), 5);
    EXPECT_EQ(Number("LenB", kMixed), 11);
    EXPECT_EQ(Number("Len", ""), 0);
    EXPECT_EQ(Number("Len", Bytes(kMixed)), 11);
    EXPECT_EQ(Number("Len", InEncoding(kMixed, sdk::Encoding::Utf16)), 5);
    EXPECT_EQ(Number("LenB", InEncoding(kMixed, sdk::Encoding::Utf16)), 12);
    EXPECT_EQ(Number("Len", InEncoding(kMixed, sdk::Encoding::Utf32)), 5);
}

TEST_F(TextFunctions, BrokenTextCountsItsBadBytesSingly) {
    EXPECT_EQ(Number("Len", "a\xc3"), 2);
    EXPECT_EQ(Number("Len", "\xff\xfe\x80"), 3);
    EXPECT_EQ(TextOf("Mid", "\xff\xc3\xa4", 2), "\xc3\xa4");
}

TEST_F(TextFunctions, LeftRightAndMidTakeCharacters) {
    EXPECT_EQ(TextOf("Left", kMixed, 2), "a\xc3\xa4");
    EXPECT_EQ(TextOf("Right", kMixed, 2), "\xf0\x9f\x98\x80z");
    EXPECT_EQ(TextOf("Mid", kMixed, 2, 2), "\xc3\xa4\xe2\x82\xac");
    EXPECT_EQ(TextOf("Mid", kMixed, 4), "\xf0\x9f\x98\x80z");
    EXPECT_EQ(TextOf("LeftB", kMixed, 2), "a\xc3");
    EXPECT_EQ(TextOf("RightB", kMixed, 2), "\x80z");
    EXPECT_EQ(TextOf("MidB", kMixed, 2, 2), "\xc3\xa4");
    EXPECT_EQ(TextOf("MidB", kMixed, 11), "z");
}

TEST_F(TextFunctions, AnyLengthAndPositionHasAnAnswer) {
    for (const char* name : {"Left", "Right", "LeftB", "RightB"}) {
        EXPECT_EQ(TextOf(name, "abc", -1), "");
        EXPECT_EQ(TextOf(name, "abc", 0), "");
        EXPECT_EQ(TextOf(name, "abc", INT32_MIN), "");
        EXPECT_EQ(TextOf(name, "abc", 3), "abc");
        EXPECT_EQ(TextOf(name, "abc", INT32_MAX), "abc");
        EXPECT_EQ(TextOf(name, "", 5), "");
    }
    for (const char* name : {"Mid", "MidB"}) {
        EXPECT_EQ(TextOf(name, "abc", 0, 2), "ab");
        EXPECT_EQ(TextOf(name, "abc", INT32_MIN, 2), "ab");
        EXPECT_EQ(TextOf(name, "abc", 4, 1), "");
        EXPECT_EQ(TextOf(name, "abc", INT32_MAX, INT32_MAX), "");
        EXPECT_EQ(TextOf(name, "abc", 2, -1), "");
        EXPECT_EQ(TextOf(name, "abc", 2, INT32_MAX), "bc");
    }
}

TEST_F(TextFunctions, PartsKeepTheEncoding) {
    EXPECT_EQ(Function("Left", Bytes("abc"), 1).string()->encoding, sdk::Encoding::None);
    const Value wide = Function("Mid", InEncoding(kMixed, sdk::Encoding::Utf16), 2, 1);
    EXPECT_EQ(wide.string()->encoding, sdk::Encoding::Utf16);
    EXPECT_EQ(wide.text(), std::string_view("\xe4\0", 2));
}

TEST_F(TextFunctions, TrimTakesBlanksFromTheEnds) {
    EXPECT_EQ(TextOf("Trim", " \t a b\r\n"), "a b");
    EXPECT_EQ(TextOf("LTrim", "  a "), "a ");
    EXPECT_EQ(TextOf("RTrim", "  a "), "  a");
    EXPECT_EQ(TextOf("Trim", "   "), "");
    EXPECT_EQ(TextOf("Trim", ""), "");
    EXPECT_EQ(TextOf("Trim", "\xe3\x80\x80\xc3\xa4 "), "\xc3\xa4");
    EXPECT_EQ(TextOf("Trim", Bytes("\xa0 \x80 ")), "\xa0 \x80");
}

TEST_F(TextFunctions, CaseIsOfAllAlphabetsButNotOfBytes) {
    EXPECT_EQ(TextOf("Uppercase", "a\xc3\xa4\xd0\xb6z1"), "A\xc3\x84\xd0\x96Z1");
    EXPECT_EQ(TextOf("Lowercase", "A\xc3\x84\xd0\x96Z1"), "a\xc3\xa4\xd0\xb6z1");
    EXPECT_EQ(TextOf("Uppercase", Bytes("a\xc3\xa4")), "A\xc3\xa4");
    EXPECT_EQ(TextOf("Uppercase", "\xff"), "\xff");
    EXPECT_EQ(TextOf("Uppercase", ""), "");
}

// --- Characters -----------------------------------------------------------------------------

TEST_F(TextFunctions, ChrAndAscAreEachOthersInverse) {
    for (int code : {0, 65, 0xe4, 0x20ac, 0x1f600, 0x10ffff}) EXPECT_EQ(Number("Asc", Function("Chr", code)), code);
    EXPECT_EQ(TextOf("Chr", 0x20ac), "\xe2\x82\xac");
    EXPECT_EQ(Number("Asc", ""), 0);
    EXPECT_EQ(Number("Asc", "\xff"), 255);
    for (int code : {-1, 0x110000, INT32_MAX, INT32_MIN}) {
        Function("Chr", code);
        EXPECT_EQ(RaisedClass(), "OutOfBoundsException");
    }
}

TEST_F(TextFunctions, ChrBAndAscBAreOfBytes) {
    EXPECT_EQ(TextOf("ChrB", 0xe4), "\xe4");
    EXPECT_EQ(TextOf("ChrB", 256 + 65), "A");
    EXPECT_EQ(Function("ChrB", 65).string()->encoding, sdk::Encoding::None);
    EXPECT_EQ(Number("AscB", kMixed + 1), 0xc3);
    EXPECT_EQ(Number("AscB", ""), 0);
}

// --- Bytes as digits --------------------------------------------------------------------------

TEST_F(TextFunctions, HexOfBytesAndBack) {
    EXPECT_EQ(TextOf("EncodeHex", Bytes(std::string_view("\x00\x7f\xff", 3))), "007FFF");
    EXPECT_EQ(TextOf("EncodeHex", "\xc3\xa4", true), "C3 A4");
    EXPECT_EQ(TextOf("EncodeHex", ""), "");
    EXPECT_EQ(TextOf("DecodeHex", "007Fff"), std::string("\x00\x7f\xff", 3));
    EXPECT_EQ(TextOf("DecodeHex", "C3 a4, 5"), "\xc3\xa4");
    EXPECT_EQ(TextOf("DecodeHex", "xyz"), "");
    EXPECT_EQ(Function("DecodeHex", "41").string()->encoding, sdk::Encoding::None);
}

TEST_F(TextFunctions, Md5MatchesThePublishedDigests) {
    const auto hex = [](const char* text) { return TextOf("EncodeHex", Function("MD5", text)); };
    EXPECT_EQ(hex(""), "D41D8CD98F00B204E9800998ECF8427E");
    EXPECT_EQ(hex("abc"), "900150983CD24FB0D6963F7D28E17F72");
    EXPECT_EQ(hex("12345678901234567890123456789012345678901234567890123456789012345678901234567890"),
              "57EDF4A22BE3C955AC49DA2E2107B67A");
    EXPECT_EQ(Function("MD5", "abc").text().size(), 16u);
}

TEST_F(TextFunctions, Md5TakesBytesWithZeros) {
    EXPECT_EQ(TextOf("EncodeHex", Function("MD5", Bytes(std::string(3, '\0')))), "693E9AF84D3DFCC71E640E005BDC5E2E");
}

// --- Numbers as text ------------------------------------------------------------------------

TEST_F(TextFunctions, StrOfWholeNumbersHasNoFraction) {
    EXPECT_EQ(TextOf("Str", 5), "5");
    EXPECT_EQ(TextOf("Str", INT32_MIN), "-2147483648");
    EXPECT_EQ(TextOf("Str", std::int64_t{9007199254740993}), "9007199254740993");
    EXPECT_EQ(TextOf("Str", 5.0), "5");
    EXPECT_EQ(TextOf("Str", -1e15), "-1000000000000000");
    EXPECT_EQ(TextOf("Str", 1e20), "100000000000000000000");
}

TEST_F(TextFunctions, StrOfFractionsReadsBackTheSame) {
    EXPECT_EQ(TextOf("Str", 0.1), "0.1");
    EXPECT_EQ(TextOf("Str", -2.5), "-2.5");
    EXPECT_EQ(TextOf("Str", 0.1f), "0.1");
    support::Bytes unused;
    for (double value : {1.0 / 3, 1e-7, 4.9e-324, 1.7976931348623157e308, 123456.789, 5e-310})
        EXPECT_EQ(Function("Val", Function("Str", value)).ToDouble(), value);
}

TEST_F(TextFunctions, StrTakesWhatElseThereIs) {
    EXPECT_EQ(TextOf("Str", true), "True");
    EXPECT_EQ(TextOf("Str", "text"), "text");
    EXPECT_EQ(TextOf("Str", static_cast<sdk::Color>(0x0102ff)), "&c0102FF");
    EXPECT_EQ(TextOf("Str", std::nan("")), "nan");
    EXPECT_EQ(TextOf("Str", -std::numeric_limits<double>::infinity()), "-inf");
}

TEST_F(TextFunctions, ValReadsTheNumberInFront) {
    const std::pair<const char*, double> rows[] = {{"12", 12},   {"  -3.5x", -3.5}, {"+4", 4},
                                                   {".5", 0.5},  {"-.25", -0.25},   {"1e3", 1000},
                                                   {"2e", 2},    {"", 0},           {"abc", 0},
                                                   {"inf", 0},   {"nan", 0},        {"-", 0},
                                                   {"--5", 0},   {"&hFF", 255},     {"&b101", 5},
                                                   {"&o17", 15}, {"&hxyz", 0},      {"&", 0},
                                                   {"1,234", 1}, {"0x10", 0},       {"&h80000000", 2147483648.0},
                                                   {"1e-400", 0}};
    for (const auto& [text, value] : rows) EXPECT_EQ(Function("Val", text).ToDouble(), value) << text;
    EXPECT_EQ(Function("CDbl", "2.5").ToDouble(), 2.5);
    EXPECT_TRUE(std::isinf(Function("Val", "1e400").ToDouble()));
    EXPECT_EQ(Function("Val", InEncoding("12.5", sdk::Encoding::Utf16)).ToDouble(), 12.5);
}

TEST_F(TextFunctions, BasesShowTheBits) {
    EXPECT_EQ(TextOf("Hex", 255), "FF");
    EXPECT_EQ(TextOf("Hex", 0), "0");
    EXPECT_EQ(TextOf("Hex", -1), "FFFFFFFF");
    EXPECT_EQ(TextOf("Hex", std::int64_t{-1}), "FFFFFFFFFFFFFFFF");
    EXPECT_EQ(TextOf("Oct", 8), "10");
    EXPECT_EQ(TextOf("Oct", -1), "37777777777");
    EXPECT_EQ(TextOf("Bin", 10), "1010");
    EXPECT_EQ(TextOf("Bin", INT32_MIN), "1" + std::string(31, '0'));
}

TEST_F(TextFunctions, FormatFollowsItsPattern) {
    const struct {
        double value;
        const char* pattern;
        const char* text;
    } rows[] = {{1.784, "#.##", "1.78"},
                {1.3, "#.0000", "1.3000"},
                {5, "0000", "0005"},
                {0.25, "#%", "25%"},
                {145678.5, "#,##0.00", "145,678.50"},
                {-145678.5, "#,##0.00", "-145,678.50"},
                {999, "#,###", "999"},
                {14.5, "+#.##", "+14.5"},
                {-3.7, "-#.##", "-3.7"},
                {3.7, "-#.##", "3.7"},
                {-3.7, "#.##-", "3.7-"},
                {0.5, "#.##", ".5"},
                {0, "#", ""},
                {0, "0.0", "0.0"},
                {-0.001, "0.0", "0.0"},
                {12345, "#.##e+", "1.23e+4"},
                {0.00012, "0.0#e", "1.2e-4"},
                {99.99, "0.0e+00", "1.0e+02"},
                {0, "0e", "0e0"},
                {5, "\\#0", "#5"},
                {5, "0 px", "5 px"},
                {5, "abc", "abc"},
                {1, "pos;neg;zero", "pos"},
                {-1, "pos;neg;zero", "neg"},
                {0, "pos;neg;zero", "zero"},
                {-5, "0;(0)", "(5)"},
                {2.5, "", "2.5"},
                {4.9e-324, "0.0e", "4.9e-324"},
                {1e300, "0", nullptr}};
    for (const auto& row : rows) {
        const std::string text = TextOf("Format", row.value, row.pattern);
        if (row.text) {
            EXPECT_EQ(text, row.text) << row.value << " by " << row.pattern;
        } else {
            EXPECT_EQ(text.size(), 301u);
        }
    }
    EXPECT_EQ(TextOf("Str", 3.14159, "0.00"), "3.14");
    EXPECT_EQ(TextOf("Format", std::nan(""), "0.00"), "nan");
    EXPECT_EQ(TextOf("Format", 1.0, "0." + std::string(2000, '0')).size(), 342u);
}

// --- Searching ------------------------------------------------------------------------------

TEST_F(TextFunctions, InStrIgnoresCaseAndInStrBDoesNot) {
    EXPECT_EQ(Number("InStr", "Hello World", "world"), 7);
    EXPECT_EQ(Number("InStrB", "Hello World", "world"), 0);
    EXPECT_EQ(Number("InStr", "x\xc3\xa4y\xc3\x84", "\xc3\x84"), 2);
    EXPECT_EQ(Number("InStr", 3, "x\xc3\xa4y\xc3\x84", "\xc3\xa4"), 4);
    EXPECT_EQ(Number("InStrB", "x\xc3\xa4y\xc3\xa4", "y"), 4);
    EXPECT_EQ(Number("InStr", InEncoding("abc", sdk::Encoding::Utf16), "C"), 3);
    EXPECT_EQ(Number("InStr", Bytes("aBb"), Bytes("b")), 3);
    EXPECT_EQ(Number("InStr", "x\xff", "\xc3\xbf"), 0);
}

TEST_F(TextFunctions, InStrHasAnAnswerForAnyArguments) {
    EXPECT_EQ(Number("InStr", "abc", "z"), 0);
    EXPECT_EQ(Number("InStr", "abc", ""), 1);
    EXPECT_EQ(Number("InStr", "", ""), 1);
    EXPECT_EQ(Number("InStr", "", "a"), 0);
    EXPECT_EQ(Number("InStr", 0, "abc", "a"), 1);
    EXPECT_EQ(Number("InStr", INT32_MIN, "abc", "a"), 1);
    EXPECT_EQ(Number("InStr", 4, "abc", ""), 4);
    EXPECT_EQ(Number("InStr", 5, "abc", ""), 0);
    EXPECT_EQ(Number("InStr", INT32_MAX, "abc", "a"), 0);
}

TEST_F(TextFunctions, ReplaceTakesTheFirstAndReplaceAllEvery) {
    EXPECT_EQ(TextOf("Replace", "aXbxc", "x", "--"), "a--bxc");
    EXPECT_EQ(TextOf("ReplaceAll", "aXbxc", "x", "--"), "a--b--c");
    EXPECT_EQ(TextOf("ReplaceAllB", "aXbxc", "x", "--"), "aXb--c");
    EXPECT_EQ(TextOf("ReplaceB", "xx", "x", ""), "x");
    EXPECT_EQ(TextOf("ReplaceAll", "aaa", "aa", "b"), "ba");
    EXPECT_EQ(TextOf("ReplaceAll", "abc", "", "z"), "abc");
    EXPECT_EQ(TextOf("ReplaceAll", "", "a", "z"), "");
    EXPECT_EQ(TextOf("ReplaceAll", "\xc3\x84x", "\xc3\xa4", "y"), "yx");
}

TEST_F(TextFunctions, SplitAndJoin) {
    EXPECT_EQ(Texts(Function("Split", "a,b,,c", ",")), (List{"a", "b", "", "c"}));
    EXPECT_EQ(Texts(Function("Split", "a b")), (List{"a", "b"}));
    EXPECT_EQ(Texts(Function("Split", "a\xc3\xa4z", "")), (List{"a", "\xc3\xa4", "z"}));
    EXPECT_EQ(Texts(Function("Split", "", ",")), (List{}));
    EXPECT_EQ(Texts(Function("Split", ",", ",")), (List{"", ""}));
    EXPECT_EQ(Texts(Function("Split", "abc", "zzz")), (List{"abc"}));
    EXPECT_EQ(TextOf("Join", Function("Split", "a,b,,c", ","), "; "), "a; b; ; c");
    EXPECT_EQ(TextOf("Join", Function("Split", "a,b", ",")), "a b");
    EXPECT_EQ(TextOf("Join", Function("Split", "", ","), ","), "");
    Function("Join", nullptr, ",");
    EXPECT_EQ(RaisedClass(), "NilObjectException");
}

}  // namespace
}  // namespace host
