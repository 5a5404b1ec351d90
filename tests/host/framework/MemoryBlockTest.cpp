// Bytes in and out of memory blocks, at every width and at every bound.
#include <sys/mman.h>

#include <cmath>

#include "host/framework/MemoryBlock.h"
#include "tests/host/framework/FrameworkTest.h"

namespace host {
namespace {

using MemoryBlockTest = FrameworkTest;

std::string Content(const Ref<Object>& block) {
    const auto bytes = BytesOfMemoryBlock(block.get());
    return {bytes.begin(), bytes.end()};
}

TEST_F(MemoryBlockTest, StartsWithZeros) {
    const auto block = New("MemoryBlock", 5);
    EXPECT_EQ(GetInt(block, "Size"), 5);
    EXPECT_EQ(Content(block), std::string(5, '\0'));
    EXPECT_TRUE(GetBool(block, "LittleEndian"));
}

TEST_F(MemoryBlockTest, MayBeEmptyButNotNegative) {
    const auto block = New("MemoryBlock", 0);
    EXPECT_EQ(GetInt(block, "Size"), 0);
    Call(block, "Byte", 0);
    EXPECT_EQ(RaisedClass(), "OutOfBoundsException");
    New("MemoryBlock", -1);
    EXPECT_EQ(RaisedClass(), "OutOfBoundsException");
}

TEST_F(MemoryBlockTest, NumbersComeBackAsTheyWereStored) {
    const auto block = New("MemoryBlock", 16);
    const auto roundTrip = [&](const char* member, const Value& value) {
        Assign(block, member, {3}, value);
        return Call(block, member, 3);
    };
    EXPECT_EQ(roundTrip("Byte", 200).ToInt32(), 200);
    EXPECT_EQ(roundTrip("UInt8Value", 200).ToInt32(), 200);
    EXPECT_EQ(roundTrip("Int8Value", -3).ToInt32(), -3);
    EXPECT_EQ(roundTrip("Int16Value", -300).ToInt32(), -300);
    EXPECT_EQ(roundTrip("UInt16Value", 65000).ToInt32(), 65000);
    EXPECT_EQ(roundTrip("Short", -2).ToInt32(), -2);
    EXPECT_EQ(roundTrip("UShort", 40000).ToInt32(), 40000);
    EXPECT_EQ(roundTrip("Int32Value", INT32_MIN).ToInt32(), INT32_MIN);
    EXPECT_EQ(roundTrip("Long", INT32_MAX).ToInt32(), INT32_MAX);
    EXPECT_EQ(roundTrip("UInt32Value", std::uint32_t{4000000000}).ToInt64(), 4000000000);
    EXPECT_EQ(roundTrip("Int64Value", std::int64_t{-5000000000}).ToInt64(), -5000000000);
    EXPECT_EQ(roundTrip("SingleValue", 1.5f).ToDouble(), 1.5);
    EXPECT_EQ(roundTrip("DoubleValue", 0.1).ToDouble(), 0.1);
    EXPECT_EQ(roundTrip("BooleanValue", true).ToBoolean(), true);
}

TEST_F(MemoryBlockTest, StoresTheLowBytesOfWhatIsTooLarge) {
    const auto block = New("MemoryBlock", 4);
    Assign(block, "Byte", {0}, 0x1ff);
    Assign(block, "Int16Value", {1}, 0x12345678);
    EXPECT_EQ(Content(block), std::string("\xff\x78\x56\0", 4));
}

TEST_F(MemoryBlockTest, ByteOrderIsAMatterOfLittleEndian) {
    const auto block = New("MemoryBlock", 8);
    Assign(block, "Int32Value", {0}, 0x01020304);
    EXPECT_EQ(Content(block).substr(0, 4), "\4\3\2\1");
    Set(block, "LittleEndian", false);
    EXPECT_EQ(Call(block, "Int32Value", 0).ToInt32(), 0x04030201);
    Assign(block, "Int16Value", {0}, 0x0102);
    Assign(block, "DoubleValue", {0}, 1.0);
    EXPECT_EQ(Content(block), std::string("\x3f\xf0\0\0\0\0\0\0", 8));
}

TEST_F(MemoryBlockTest, EveryAccessKeepsInsideTheBlock) {
    const auto block = New("MemoryBlock", 8);
    const struct {
        const char* member;
        int size;
    } rows[] = {{"Byte", 1},        {"UInt8Value", 1},  {"Int8Value", 1},   {"BooleanValue", 1}, {"Short", 2},
                {"UShort", 2},      {"Int16Value", 2},  {"UInt16Value", 2}, {"Int32Value", 4},   {"Long", 4},
                {"UInt32Value", 4}, {"SingleValue", 4}, {"Int64Value", 8},  {"DoubleValue", 8}};
    for (const auto& row : rows)
        for (int offset : {8 - row.size + 1, 8, -1, INT32_MAX, INT32_MIN}) {
            Call(block, row.member, offset);
            EXPECT_EQ(RaisedClass(), "OutOfBoundsException") << row.member << " " << offset;
            Assign(block, row.member, {offset}, std::string(row.member) == "BooleanValue" ? Value(true) : Value(1));
            EXPECT_EQ(RaisedClass(), "OutOfBoundsException") << row.member << " " << offset;
        }
    for (const auto& row : rows) {
        Call(block, row.member, 8 - row.size);
        EXPECT_EQ(RaisedClass(), "");
    }
    EXPECT_EQ(Content(block), std::string(8, '\0'));
}

TEST_F(MemoryBlockTest, MessageNamesOffsetAndSize) {
    const auto block = New("MemoryBlock", 4);
    Call(block, "Byte", 4);
    EXPECT_EQ(TakeThrown().message, "Byte 4 is not in a memory block of 4 bytes.");
    Call(block, "Int32Value", 2);
    EXPECT_EQ(TakeThrown().message, "4 bytes at offset 2 are not in a memory block of 4 bytes.");
}

TEST_F(MemoryBlockTest, StringsAreBytes) {
    const auto block = New("MemoryBlock", 6);
    Assign(block, "StringValue", {1, 3}, "\xc3\xa4z!");
    EXPECT_EQ(Content(block), std::string("\0\xc3\xa4z\0\0", 6));
    const Value bytes = Call(block, "StringValue", 1, 2);
    EXPECT_EQ(bytes.text(), "\xc3\xa4");
    EXPECT_EQ(bytes.string()->encoding, sdk::Encoding::None);
    EXPECT_EQ(Call(block, "StringValue", 6, 0).text(), "");
    for (auto [offset, length] : {std::pair{0, 7}, {-1, 2}, {0, -1}, {5, INT32_MAX}}) {
        Call(block, "StringValue", offset, length);
        EXPECT_EQ(RaisedClass(), "OutOfBoundsException");
        Assign(block, "StringValue", {offset, length}, "x");
        EXPECT_EQ(RaisedClass(), "OutOfBoundsException");
    }
}

TEST_F(MemoryBlockTest, AShorterStringIsFilledUpWithZeros) {
    const auto block = Ref<Object>(NewMemoryBlock(std::string_view("abcdef")));
    Assign(block, "StringValue", {1, 4}, "xy");
    EXPECT_EQ(Content(block), std::string("axy\0\0f", 6));
}

TEST_F(MemoryBlockTest, CStringEndsAtAZeroByte) {
    const auto block = Ref<Object>(NewMemoryBlock(std::string_view("ab\0cd", 5)));
    EXPECT_EQ(Call(block, "CString", 0).text(), "ab");
    EXPECT_EQ(Call(block, "CString", 3).text(), "cd");
    Call(block, "CString", 5);
    EXPECT_EQ(RaisedClass(), "OutOfBoundsException");
    Assign(block, "CString", {0}, "wxyz");
    EXPECT_EQ(Content(block), std::string("wxyz\0", 5));
    Assign(block, "CString", {1}, "wxyz");
    EXPECT_EQ(RaisedClass(), "OutOfBoundsException");
}

TEST_F(MemoryBlockTest, PartsAreCopiesAndLeaveOutWhatIsNotThere) {
    const auto block = Ref<Object>(NewMemoryBlock(std::string_view("abcdef")));
    EXPECT_EQ(Content(CallObject(block, "LeftB", 2)), "ab");
    EXPECT_EQ(Content(CallObject(block, "LeftB", 100)), "abcdef");
    EXPECT_EQ(Content(CallObject(block, "LeftB", -1)), "");
    EXPECT_EQ(Content(CallObject(block, "RightB", 2)), "ef");
    EXPECT_EQ(Content(CallObject(block, "RightB", INT32_MAX)), "abcdef");
    EXPECT_EQ(Content(CallObject(block, "RightB", INT32_MIN)), "");
    EXPECT_EQ(Content(CallObject(block, "MidB", 2, 3)), "cde");
    EXPECT_EQ(Content(CallObject(block, "MidB", -1, 3)), "ab");
    EXPECT_EQ(Content(CallObject(block, "MidB", 4, INT32_MAX)), "ef");
    EXPECT_EQ(Content(CallObject(block, "MidB", 9, 1)), "");
    const auto part = CallObject(block, "LeftB", 2);
    Assign(part, "Byte", {0}, 65);
    EXPECT_EQ(Content(block), "abcdef");
}

TEST_F(MemoryBlockTest, AnotherSizeKeepsWhatBothHave) {
    const auto block = Ref<Object>(NewMemoryBlock(std::string_view("abcdef")));
    Set(block, "Size", 3);
    EXPECT_EQ(Content(block), "abc");
    Set(block, "Size", 5);
    EXPECT_EQ(Content(block), std::string("abc\0\0", 5));
    Set(block, "Size", -1);
    EXPECT_EQ(RaisedClass(), "OutOfBoundsException");
    EXPECT_EQ(GetInt(block, "Size"), 5);
}

TEST_F(MemoryBlockTest, AnAddressGivenAwayOutlivesAChangeOfSize) {
    const auto block = New("MemoryBlock", 4);
    std::uint8_t* before = support::BlockAddress(block);
    Set(block, "Size", 100);
    before[3] = 7;  // must still be memory
    EXPECT_EQ(Call(block, "Byte", 3).ToInt32(), 0);
    EXPECT_NE(support::BlockAddress(block), before);
}

TEST_F(MemoryBlockTest, ConvertsFromAndToStrings) {
    const Value block = ConvertTo(Bytes("abc"), TypeNamed("MemoryBlock"));
    ASSERT_NE(block.object(), nullptr);
    EXPECT_EQ(GetInt(Ref<Object>::Share(block.object()), "Size"), 3);
    const Value text = ConvertTo(block, TypeNamed("String"));
    EXPECT_EQ(text.text(), "abc");
    EXPECT_EQ(text.string()->encoding, sdk::Encoding::None);
    EXPECT_EQ(ConvertTo(Value(New("MemoryBlock", 0)), TypeNamed("String")).text(), "");
}

TEST_F(MemoryBlockTest, ConversionsKeepZeroBytes) {
    const Value block = ConvertTo(Bytes(std::string_view("a\0b", 3)), TypeNamed("MemoryBlock"));
    EXPECT_EQ(ConvertTo(block, TypeNamed("String")).text(), std::string_view("a\0b", 3));
}

// --- Foreign bytes --------------------------------------------------------------------------

TEST_F(MemoryBlockTest, ForeignBytesAreReadAndWrittenInPlace) {
    std::uint8_t bytes[4] = {1, 2, 3, 4};
    const auto block = Ref<Object>(NewForeignMemoryBlock(bytes));
    EXPECT_EQ(GetInt(block, "Size"), -1);
    EXPECT_EQ(Call(block, "Byte", 2).ToInt32(), 3);
    EXPECT_EQ(Call(block, "Int32Value", 0).ToInt32(), 0x04030201);
    Assign(block, "Byte", {1}, 99);
    EXPECT_EQ(bytes[1], 99);
    EXPECT_EQ(Call(block, "StringValue", 0, 2).text(), "\1c");
    EXPECT_EQ(Content(CallObject(block, "MidB", 2, 2)), "\3\4");
    EXPECT_EQ(support::BlockAddress(block), bytes);
}

TEST_F(MemoryBlockTest, ForeignBlocksOfNothingAreNil) { EXPECT_FALSE(NewForeignMemoryBlock(nullptr)); }

TEST_F(MemoryBlockTest, ForeignBytesMayBeOfAClassThatGivesThemBack) {
    static int given = 0;
    static Class* const lent = [] {
        Runtime& runtime = Runtime::Get();
        Class* type = runtime.AddClass(std::make_unique<Class>("LentBytes", runtime.FindClass("MemoryBlock")));
        type->SetDestructor([](Object*) { ++given; });
        return type;
    }();
    std::uint8_t bytes[2] = {7, 9};
    {
        const auto block = Ref<Object>(NewForeignMemoryBlock(bytes, *lent));
        EXPECT_EQ(PinMemoryBlock(block.get()), bytes);
        EXPECT_EQ(given, 0);
    }
    EXPECT_EQ(given, 1);
}

TEST_F(MemoryBlockTest, ForeignBytesThatAreNotThereRaise) {
    const long page = sysconf(_SC_PAGESIZE);
    auto* pages = static_cast<std::uint8_t*>(
        mmap(nullptr, static_cast<std::size_t>(2 * page), PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    munmap(pages + page, static_cast<std::size_t>(page));
    const auto block = Ref<Object>(NewForeignMemoryBlock(pages));
    const int last = static_cast<int>(page) - 1;
    Assign(block, "Byte", {last}, 5);
    EXPECT_EQ(Call(block, "Byte", last).ToInt32(), 5);
    EXPECT_EQ(RaisedClass(), "");
    for (int offset : {last + 1, last - 2}) {
        Call(block, "Int32Value", offset);
        EXPECT_EQ(RaisedClass(), "OutOfBoundsException") << offset;
        Assign(block, "Int32Value", {offset}, 1);
        EXPECT_EQ(RaisedClass(), "OutOfBoundsException") << offset;
    }
    Call(block, "Byte", -1);
    EXPECT_EQ(RaisedClass(), "OutOfBoundsException");
    mprotect(pages, static_cast<std::size_t>(page), PROT_READ);
    Assign(block, "Byte", {0}, 1);
    EXPECT_EQ(RaisedClass(), "OutOfBoundsException");
    munmap(pages, static_cast<std::size_t>(page));
}

TEST_F(MemoryBlockTest, AnyForeignAddressIsSurvived) {
    for (std::uintptr_t address : {std::uintptr_t{1}, ~std::uintptr_t{0}, ~std::uintptr_t{0} << 47}) {
        const auto block = Ref<Object>(NewForeignMemoryBlock(reinterpret_cast<std::uint8_t*>(address)));
        for (int offset : {0, 8, 1000}) {
            Call(block, "Int64Value", offset);
            EXPECT_EQ(RaisedClass(), "OutOfBoundsException");
        }
    }
}

TEST_F(MemoryBlockTest, WhatNeedsASizeIsRefusedForForeignBytes) {
    std::uint8_t bytes[4] = {};
    const auto block = Ref<Object>(NewForeignMemoryBlock(bytes));
    Set(block, "Size", 4);
    EXPECT_EQ(RaisedClass(), "OutOfBoundsException");
    Call(block, "RightB", 2);
    EXPECT_EQ(RaisedClass(), "OutOfBoundsException");
    ConvertTo(Value(block), TypeNamed("String"));
    EXPECT_EQ(RaisedClass(), "OutOfBoundsException");
}

// --- Host functions -------------------------------------------------------------------------

TEST_F(MemoryBlockTest, HostFunctionRefusesSizesThatCantBe) {
    EXPECT_EQ(HostFunctionSlot<sdk::knewMemoryBlock>::Call(-1), nullptr);
    EXPECT_EQ(HostFunctionSlot<sdk::knewMemoryBlock>::Call(std::int64_t{1} << 40), nullptr);
    const auto empty = support::MakeBlock(std::size_t{0});
    EXPECT_EQ(support::BlockAddress(empty), nullptr);
}

TEST_F(MemoryBlockTest, AddressOfAnythingElseIsNull) {
    EXPECT_EQ(HostFunctionSlot<sdk::kmemoryBlockGetPtr>::Call(nullptr), nullptr);
    EXPECT_EQ(support::BlockAddress(New("RuntimeException")), nullptr);
}

}  // namespace
}  // namespace host
