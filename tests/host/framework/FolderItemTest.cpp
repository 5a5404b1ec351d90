// Paths, and the references to files that plug-ins get.
#include <filesystem>

#include "host/framework/Paths.h"
#include "tests/host/framework/FrameworkTest.h"

namespace host {
namespace {

using FolderItemTest = FrameworkTest;

constexpr const char* kComposed = "\xc3\xa4";     // a with two dots, one character
constexpr const char* kDecomposed = "a\xcc\x88";  // a, combining dots

sdk::FileReference ReferenceOf(const Ref<Object>& item) {
    sdk::FileReference reference{};
    EXPECT_TRUE(HostFunctionSlot<sdk::kREALFSRefFromFolderItem>::Call(item.get(), &reference));
    return reference;
}

TEST_F(FolderItemTest, PathsAreAbsoluteAndTidy) {
    EXPECT_EQ(AbsolutePath("/a//b/./c/../d/"), "/a/b/d");
    EXPECT_EQ(AbsolutePath("/"), "/");
    EXPECT_EQ(AbsolutePath("//a"), "/a");
    EXPECT_EQ(AbsolutePath("/.."), "/");
    EXPECT_EQ(AbsolutePath(""), std::filesystem::current_path().string());
    EXPECT_EQ(AbsolutePath("x"), std::filesystem::current_path().string() + "/x");
}

TEST_F(FolderItemTest, KnowsItsNameParentAndChildren) {
    const auto item = ObjectOf("GetFolderItem", "/a/b.png");
    EXPECT_EQ(GetText(item, "Name"), "b.png");
    EXPECT_EQ(GetText(item, "NativePath"), "/a/b.png");
    EXPECT_EQ(GetText(GetObject(item, "Parent"), "NativePath"), "/a");
    EXPECT_EQ(GetText(CallObject(GetObject(item, "Parent"), "Child", "c"), "NativePath"), "/a/c");
    const auto root = ObjectOf("GetFolderItem", "/");
    EXPECT_EQ(GetText(root, "Name"), "/");
    EXPECT_FALSE(GetObject(root, "Parent"));
    EXPECT_EQ(GetText(CallObject(root, "Child", "c"), "NativePath"), "/c");
    for (const char* name : {"", ".", "..", "a/b"}) EXPECT_FALSE(CallObject(root, "Child", name)) << name;
}

TEST_F(FolderItemTest, LooksAtTheFileSystemWhenAsked) {
    const auto folder = ObjectOf("GetFolderItem", directory.path().string());
    const auto file = CallObject(folder, "Child", "f.txt");
    EXPECT_FALSE(GetBool(file, "Exists"));
    EXPECT_EQ(GetInt(file, "Length"), 0);
    WriteBytes(directory.Path("f.txt"), "12345");
    EXPECT_TRUE(GetBool(file, "Exists"));
    EXPECT_FALSE(GetBool(file, "Directory"));
    EXPECT_EQ(GetInt(file, "Length"), 5);
    EXPECT_TRUE(GetBool(folder, "Directory"));
    EXPECT_EQ(GetInt(folder, "Length"), 0);
    Call(file, "Delete");
    EXPECT_FALSE(GetBool(file, "Exists"));
    Call(file, "Delete");
    EXPECT_EQ(RaisedClass(), "IOException");
}

TEST_F(FolderItemTest, FoldersCountTheirItemsInOrder) {
    const auto folder = ObjectOf("GetFolderItem", directory.Path("sub"));
    EXPECT_EQ(GetInt(folder, "Count"), 0);
    Call(folder, "CreateAsFolder");
    for (const char* name : {"b", "c", "a"}) WriteBytes(directory.Path(std::string("sub/") + name), "");
    EXPECT_EQ(GetInt(folder, "Count"), 3);
    EXPECT_EQ(GetText(CallObject(folder, "Item", 1), "Name"), "a");
    EXPECT_EQ(GetText(CallObject(folder, "Item", 3), "Name"), "c");
    for (int index : {0, 4, -1, INT32_MAX}) {
        Call(folder, "Item", index);
        EXPECT_EQ(RaisedClass(), "OutOfBoundsException");
    }
    Call(folder, "CreateAsFolder");
    EXPECT_EQ(RaisedClass(), "IOException");
    Call(folder, "Delete");  // not empty
    EXPECT_EQ(RaisedClass(), "IOException");
    EXPECT_TRUE(GetBool(folder, "Exists"));
}

TEST_F(FolderItemTest, TemporaryFolderExists) { EXPECT_TRUE(GetBool(ObjectOf("TemporaryFolder"), "Directory")); }

TEST_F(FolderItemTest, WithoutAPathRaises) {
    // A script can make one only through the constructor, a plug-in without it.
    const auto bare = NewObject(Runtime::Get().ClassNamed("FolderItem"));
    Get(bare, "Name");
    EXPECT_EQ(RaisedClass(), "NilObjectException");
    sdk::FileReference reference{};
    EXPECT_FALSE(HostFunctionSlot<sdk::kREALFSRefFromFolderItem>::Call(bare.get(), &reference));
    EXPECT_FALSE(HostFunctionSlot<sdk::kREALFSRefFromFolderItem>::Call(nullptr, &reference));
}

// --- Paths for plug-ins ---------------------------------------------------------------------

TEST_F(FolderItemTest, PlugInsGetDecomposedNames) {
    const auto item = ObjectOf("GetFolderItem", directory.Path(std::string(kComposed) + ".raw"));
    const auto reference = ReferenceOf(item);
    EXPECT_EQ(reference.path, directory.Path(std::string(kDecomposed) + ".raw"));
    EXPECT_FALSE(reference.exists);
}

TEST_F(FolderItemTest, AFolderThatExistsOnlyAsGivenStaysAsGiven) {
    const std::string folder = directory.Path(kComposed);
    std::filesystem::create_directory(folder);
    const auto item = ObjectOf("GetFolderItem", folder + "/" + kComposed);
    EXPECT_EQ(ReferenceOf(item).path, folder + "/" + kDecomposed);
    std::filesystem::create_directory(directory.Path(kDecomposed));
    EXPECT_EQ(ReferenceOf(item).path, directory.Path(kDecomposed) + "/" + kDecomposed);
}

TEST_F(FolderItemTest, SaysWhetherTheItemExists) {
    WriteBytes(directory.Path("there"), "");
    EXPECT_TRUE(ReferenceOf(ObjectOf("GetFolderItem", directory.Path("there"))).exists);
    EXPECT_FALSE(ReferenceOf(ObjectOf("GetFolderItem", directory.Path("not there"))).exists);
    EXPECT_STREQ(ReferenceOf(ObjectOf("GetFolderItem", "/")).path, "/");
}

TEST_F(FolderItemTest, BytesThatAreNoTextStayAsTheyAre) { EXPECT_EQ(Decomposed("a\xff\xfe"), "a\xff\xfe"); }

TEST_F(FolderItemTest, APathTooLongForTheRecordIsRefused) {
    const auto item = ObjectOf("GetFolderItem", "/" + std::string(5000, 'x'));
    sdk::FileReference reference{};
    EXPECT_FALSE(HostFunctionSlot<sdk::kREALFSRefFromFolderItem>::Call(item.get(), &reference));
    EXPECT_FALSE(GetBool(item, "Exists"));
}

}  // namespace
}  // namespace host
