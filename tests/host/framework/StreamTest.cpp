// Files read and written through the stream classes.
#include "host/framework/Application.h"
#include "tests/host/framework/FrameworkTest.h"

namespace host {
namespace {

class StreamTest : public FrameworkTest {
  protected:
    Ref<Object> Item(const std::string& name) { return ObjectOf("GetFolderItem", directory.Path(name)); }

    Ref<Object> OpenShared(const char* type, const char* method, const auto&... arguments) {
        return Ref<Object>::Share(CallShared(type, method, arguments...).object());
    }
};

std::string Text(const Value& value) { return std::string(value.text()); }

TEST_F(StreamTest, LinesEndInAnyOfTheUsualWays) {
    WriteBytes(directory.Path("a"), "one\ntwo\r\n\rfour");
    const auto stream = OpenShared("TextInputStream", "Open", Item("a"));
    for (const char* line : {"one", "two", "", "four"}) {
        EXPECT_FALSE(Call(stream, "EOF").ToBoolean());
        EXPECT_EQ(Text(Call(stream, "ReadLine")), line);
    }
    EXPECT_TRUE(Call(stream, "EOF").ToBoolean());
    EXPECT_EQ(Text(Call(stream, "ReadLine")), "");
    EXPECT_EQ(RaisedClass(), "");
}

TEST_F(StreamTest, TextIsUtf8WhereItCanBe) {
    WriteBytes(directory.Path("a"), "\xc3\xa4\n\xff\xfe");
    const auto stream = OpenShared("TextInputStream", "Open", Item("a"));
    EXPECT_EQ(Call(stream, "ReadLine").string()->encoding, sdk::Encoding::Utf8);
    const Value rest = Call(stream, "ReadAll");
    EXPECT_EQ(rest.text(), "\xff\xfe");
    EXPECT_EQ(rest.string()->encoding, sdk::Encoding::None);
    EXPECT_EQ(Text(Call(stream, "Read", INT32_MAX)), "");
}

TEST_F(StreamTest, OutputIsCreatedAnewOrAppendedTo) {
    const auto write = [&](const char* method, const char* text) {
        const auto stream = OpenShared("TextOutputStream", method, Item("a"));
        Call(stream, "WriteLine", text);
        Call(stream, "Write", "+");
        Call(stream, "WriteLine");
        Call(stream, "Close");
        Call(stream, "Close");
        Call(stream, "Write", "late");
        EXPECT_EQ(RaisedClass(), "IOException");
    };
    write("Create", "rubbish");
    write("Create", "one");
    write("Append", "two");
    EXPECT_EQ(ReadBytes(directory.Path("a")), "one\n+\ntwo\n+\n");
}

TEST_F(StreamTest, WhatIsWrittenIsThereWhenTheStreamGoes) {
    Call(OpenShared("TextOutputStream", "Create", Item("a")), "Write", "x");
    EXPECT_EQ(ReadBytes(directory.Path("a")), "x");
}

TEST_F(StreamTest, FilesThatCantBeOpenedRaiseWithTheirName) {
    for (const char* type : {"TextInputStream", "BinaryStream"}) {
        CallShared(type, "Open", Item("missing"));
        const auto thrown = TakeThrown();
        EXPECT_EQ(thrown.className, "IOException");
        EXPECT_EQ(thrown.message.find(directory.Path("missing")), 0u);
        CallShared(type, "Open", Item("."));
        EXPECT_EQ(RaisedClass(), "IOException");
        CallShared(type, "Open", nullptr);
        EXPECT_EQ(RaisedClass(), "NilObjectException");
    }
    CallShared("TextOutputStream", "Create", Item("no/such/folder"));
    EXPECT_EQ(RaisedClass(), "IOException");
    for (const char* type : {"TextInputStream", "TextOutputStream", "BinaryStream"}) {
        Call(New(type), "Close");
        EXPECT_EQ(RaisedClass(), "NilObjectException");
    }
}

TEST_F(StreamTest, NumbersComeBackInEitherByteOrder) {
    for (bool little : {true, false}) {
        const auto stream = OpenShared("BinaryStream", "Create", Item("a"), true);
        Set(stream, "LittleEndian", little);
        Call(stream, "WriteInt8", -2);
        Call(stream, "WriteUInt8", 200);
        Call(stream, "WriteByte", 0x1ff);
        Call(stream, "WriteInt16", -300);
        Call(stream, "WriteUInt16", 65000);
        Call(stream, "WriteInt32", 0x01020304);
        Call(stream, "WriteUInt32", std::uint32_t{4000000000});
        Call(stream, "WriteInt64", std::int64_t{-5000000000});
        Call(stream, "WriteSingle", 1.5f);
        Call(stream, "WriteDouble", 0.1);
        EXPECT_EQ(ReadBytes(directory.Path("a")).size(), 0u);  // still waiting
        EXPECT_EQ(GetInt(stream, "Length"), 1 + 1 + 1 + 2 + 2 + 4 + 4 + 8 + 4 + 8);
        EXPECT_EQ(ReadBytes(directory.Path("a")).substr(7, 4), little ? "\4\3\2\1" : "\1\2\3\4");
        Set(stream, "Position", 0);
        EXPECT_EQ(Call(stream, "ReadInt8").ToInt32(), -2);
        EXPECT_EQ(Call(stream, "ReadUInt8").ToInt32(), 200);
        EXPECT_EQ(Call(stream, "ReadByte").ToInt32(), 255);
        EXPECT_EQ(Call(stream, "ReadInt16").ToInt32(), -300);
        EXPECT_EQ(Call(stream, "ReadUInt16").ToInt32(), 65000);
        EXPECT_EQ(Call(stream, "ReadInt32").ToInt32(), 0x01020304);
        EXPECT_EQ(Call(stream, "ReadUInt32").ToInt64(), 4000000000);
        EXPECT_EQ(Call(stream, "ReadInt64").ToInt64(), -5000000000);
        EXPECT_EQ(Call(stream, "ReadSingle").ToDouble(), 1.5);
        EXPECT_EQ(Call(stream, "ReadDouble").ToDouble(), 0.1);
        EXPECT_TRUE(Call(stream, "EOF").ToBoolean());
    }
}

TEST_F(StreamTest, ANumberCutShortRaisesAndStays) {
    WriteBytes(directory.Path("a"), "abc");
    const auto stream = OpenShared("BinaryStream", "Open", Item("a"));
    Call(stream, "ReadInt32");
    EXPECT_EQ(RaisedClass(), "IOException");
    EXPECT_EQ(GetInt(stream, "Position"), 0);
    EXPECT_EQ(Text(Call(stream, "Read", 100)), "abc");
    EXPECT_EQ(Text(Call(stream, "Read", -1)), "");
    Call(stream, "Write", "x");  // opened for reading
    Call(stream, "Flush");
    EXPECT_EQ(RaisedClass(), "IOException");
}

TEST_F(StreamTest, ReadingAndWritingMayAlternate) {
    WriteBytes(directory.Path("a"), "abcdef");
    const auto stream = OpenShared("BinaryStream", "Open", Item("a"), true);
    EXPECT_EQ(Text(Call(stream, "Read", 2)), "ab");
    Call(stream, "Write", "XY");
    EXPECT_EQ(Text(Call(stream, "Read", 2)), "ef");
    Set(stream, "Position", -5);
    EXPECT_EQ(GetInt(stream, "Position"), 0);
    Set(stream, "Length", 3);
    Call(stream, "Close");
    EXPECT_EQ(ReadBytes(directory.Path("a")), "abX");
}

TEST_F(StreamTest, CreateKeepsAnExistingFileUnlessToldOtherwise) {
    WriteBytes(directory.Path("a"), "abc");
    CallShared("BinaryStream", "Create", Item("a"));
    EXPECT_EQ(RaisedClass(), "IOException");
    EXPECT_EQ(ReadBytes(directory.Path("a")), "abc");
    OpenShared("BinaryStream", "Create", Item("a"), true);
    EXPECT_EQ(ReadBytes(directory.Path("a")), "");
}

TEST_F(StreamTest, ArgumentsReachTheScript) {
    SetApplicationArguments({"one", "\xc3\xa4"});
    const Value all = CallShared("App", "Arguments");
    ASSERT_EQ(all.array()->values.size(), 2u);
    EXPECT_EQ(all.array()->values[1].text(), "\xc3\xa4");
    EXPECT_EQ(CallShared("App", "Arguments", 0).text(), "one");
    for (int index : {-1, 2, INT32_MAX}) {
        CallShared("App", "Arguments", index);
        EXPECT_EQ(RaisedClass(), "OutOfBoundsException");
    }
    SetApplicationArguments({});
}

}  // namespace
}  // namespace host
