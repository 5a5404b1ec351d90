// An item's path and what the file system says of it; the records that plug-ins get.
#include "host/framework/FolderItem.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <vector>

#include "host/framework/Date.h"
#include "host/framework/FolderItemCalls.h"
#include "host/framework/Paths.h"
#include "host/framework/PictureFiles.h"
#include "host/framework/RowTransfer.h"
#include "host/framework/Support.h"

namespace host {

namespace {

struct FolderItemData {
    std::string* path;  // absolute; null in an instance that a script made by itself
};

sdk::ClassDefinition definition{.name = "FolderItem", .instanceDataSize = sizeof(FolderItemData)};

void Destroy(sdk::Object* item) { delete DataOf<FolderItemData>(item, definition).path; }

void SetPath(sdk::Object* item, std::string path) {
    std::string*& place = DataOf<FolderItemData>(item, definition).path;
    std::string* before = std::exchange(place, new std::string(std::move(path)));
    delete before;
}

void Construct(sdk::Object* item, sdk::String* path) { SetPath(item, AbsolutePath(Bytes(path))); }

[[noreturn]] void FailSystem(const std::string& path, const RaisedMessage& what) {
    const int number = errno;
    Fail(what(path, std::strerror(number)), number);
}

bool Status(sdk::Object* item, struct stat& status) { return stat(PathOf(item).c_str(), &status) == 0; }

// --- Properties -----------------------------------------------------------------------------

sdk::String* Name(sdk::Object* item) { return GiveString(NameOfPath(PathOf(item))); }
sdk::String* NativePath(sdk::Object* item) { return GiveString(PathOf(item)); }

bool Exists(sdk::Object* item) {
    struct stat status {};
    return Status(item, status);
}

bool IsDirectory(sdk::Object* item) {
    struct stat status {};
    return Status(item, status) && S_ISDIR(status.st_mode);
}

// Bytes; 0 for what is missing or no file.
std::int64_t Length(sdk::Object* item) {
    struct stat status {};
    return Status(item, status) && S_ISREG(status.st_mode) ? status.st_size : 0;
}

bool MayDo(sdk::Object* item, int what) { return access(PathOf(item).c_str(), what) == 0; }
bool IsReadable(sdk::Object* item) { return MayDo(item, R_OK); }
bool IsWriteable(sdk::Object* item) { return MayDo(item, W_OK); }

// A name that begins with a dot is not shown.
bool IsVisible(sdk::Object* item) { return NameOfPath(PathOf(item))[0] != '.'; }

// Nil for what is missing.
sdk::Object* ModificationDate(sdk::Object* item) {
    struct stat status {};
    return Status(item, status) ? NewDate(status.st_mtime).Detach() : nullptr;
}

// Nil for the root folder.
sdk::Object* Parent(sdk::Object* item) {
    const std::string& path = PathOf(item);
    return path == "/" ? nullptr : NewFolderItem(FolderOfPath(path)).Detach();
}

// --- Folders --------------------------------------------------------------------------------

// Nil for a name that is no name of an item: empty, ".", "..", or with a slash or a zero byte.
sdk::Object* Child(sdk::Object* item, sdk::String* name) {
    const std::string text(Bytes(name));
    if (text.empty() || text == "." || text == ".." || text.find('/') != text.npos || text.find('\0') != text.npos)
        return nullptr;
    return NewFolderItem(PathOf(item) + "/" + text).Detach();
}

// The names in a folder, in the order of their bytes; none for what is no folder.
std::vector<std::string> NamesIn(const std::string& path) {
    std::vector<std::string> names;
    std::error_code error;
    for (std::filesystem::directory_iterator entry(path, error), end; !error && entry != end; entry.increment(error))
        names.push_back(entry->path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

std::int32_t Count(sdk::Object* item) { return static_cast<std::int32_t>(NamesIn(PathOf(item)).size()); }

// Counted from 1.
sdk::Object* Item(sdk::Object* item, std::int32_t index) {
    const std::vector<std::string> names = NamesIn(PathOf(item));
    if (index < 1 || static_cast<std::size_t>(index) > names.size()) Fail(kFilesRaise.itemNumber(index, names.size()));
    return NewFolderItem(PathOf(item) + "/" + names[static_cast<std::size_t>(index) - 1]).Detach();
}

void CreateAsFolder(sdk::Object* item) {
    const std::string& path = PathOf(item);
    if (mkdir(path.c_str(), 0777) != 0) FailSystem(path, kFilesRaise.cannotMakeFolder);
}

// A file, a link, or an empty folder.
void Delete(sdk::Object* item) {
    const std::string& path = PathOf(item);
    struct stat status {};
    const bool folder = lstat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
    if ((folder ? rmdir(path.c_str()) : unlink(path.c_str())) != 0) FailSystem(path, kFilesRaise.cannotDelete);
}

// --- Pictures -------------------------------------------------------------------------------

sdk::Object* OpenAsPicture(sdk::Object* item) { return ReadPicture(PathOf(item)).Detach(); }

void SaveAsPicture(sdk::Object* item, sdk::Object* picture) { WritePicture(picture, PathOf(item), {}); }

void SaveAsPictureWithQuality(sdk::Object* item, sdk::Object* picture, std::int32_t quality) {
    WritePicture(picture, PathOf(item), {std::nullopt, quality});
}

// --- Rows: any object that has them, whatever its size -----------------------------------------

void OpenInto(sdk::Object* item, sdk::Object* picture) { ReadFileInto(PathOf(item), FromPlugin(picture)); }

void SaveFrom(sdk::Object* item, sdk::Object* picture) { WriteFileFrom(PathOf(item), FromPlugin(picture), {}); }

void SaveFromWithQuality(sdk::Object* item, sdk::Object* picture, std::int32_t quality) {
    WriteFileFrom(PathOf(item), FromPlugin(picture), {std::nullopt, quality});
}

// --- Functions ------------------------------------------------------------------------------

sdk::Object* GetFolderItem(sdk::String* path) { return NewFolderItem(Bytes(path)).Detach(); }

sdk::Object* TemporaryFolder() {
    std::error_code error;
    const std::filesystem::path path = std::filesystem::temp_directory_path(error);
    return NewFolderItem(error ? "/tmp" : path.string()).Detach();
}

bool FillReference(sdk::Object* item, sdk::FileReference* reference) {
    if (!IsInstance(item, definition) || !DataOf<FolderItemData>(item, definition).path) return false;
    return FillFileReference(PathOf(item), *reference);
}

}  // namespace

Ref<Object> NewFolderItem(std::string_view path) {
    Ref<Object> item = NewInstanceOf(definition);
    SetPath(item.get(), AbsolutePath(path));
    return item;
}

const std::string& PathOf(sdk::Object* item) {
    if (!IsInstance(item, definition)) Fail(kFilesRaise.noItem());
    const std::string* path = DataOf<FolderItemData>(item, definition).path;
    if (!path) Fail(kFilesRaise.noPath());
    return *path;
}

void RegisterFolderItem(Runtime& runtime) {
    static const sdk::MethodRecord methods[] = {
        sdk::Method<"Constructor(path as string)", Guarded<&Construct>>(sdk::kMemberPortable),
        sdk::Method<"Child(name as string) as FolderItem", Guarded<&Child>>(sdk::kMemberPortable),
        sdk::Method<"Item(index as integer) as FolderItem", Guarded<&Item>>(sdk::kMemberPortable),
        sdk::Method<"CreateAsFolder", Guarded<&CreateAsFolder>>(sdk::kMemberPortable),
        sdk::Method<"Delete", Guarded<&Delete>>(sdk::kMemberPortable),
        sdk::Method<"OpenAsTextFile as TextInputStream", Guarded<&OpenAsTextFile>>(sdk::kMemberPortable),
        sdk::Method<"CreateTextFile as TextOutputStream", Guarded<&CreateTextFile>>(sdk::kMemberPortable),
        sdk::Method<"AppendToTextFile as TextOutputStream", Guarded<&AppendToTextFile>>(sdk::kMemberPortable),
        sdk::Method<"OpenAsBinaryFile(readWrite as boolean = False) as BinaryStream", Guarded<&OpenAsBinaryFile>>(
            sdk::kMemberPortable),
        sdk::Method<"CreateBinaryFile(fileType as string = \"\") as BinaryStream", Guarded<&CreateBinaryFile>>(
            sdk::kMemberPortable),
        sdk::Method<"CopyFileTo(destination as FolderItem)", Guarded<&CopyFileTo>>(sdk::kMemberPortable),
        sdk::Method<"MoveFileTo(destination as FolderItem)", Guarded<&MoveFileTo>>(sdk::kMemberPortable),
        sdk::Method<"OpenAsPicture as Picture", Guarded<&OpenAsPicture>>(0),
        sdk::Method<"SaveAsPicture(pic as Picture)", Guarded<&SaveAsPicture>>(0),
        sdk::Method<"SaveAsPicture(pic as Picture, quality as integer)", Guarded<&SaveAsPictureWithQuality>>(0),
        sdk::Method<"OpenInto(picture as Variant)", Guarded<&OpenInto>>(sdk::kMemberPortable),
        sdk::Method<"SaveFrom(picture as Variant)", Guarded<&SaveFrom>>(sdk::kMemberPortable),
        sdk::Method<"SaveFrom(picture as Variant, quality as integer)", Guarded<&SaveFromWithQuality>>(
            sdk::kMemberPortable),
    };
    static const sdk::PropertyRecord properties[] = {
        ReadOnly<"String", &Name>("Name"),
        ReadOnly<"String", &NativePath>("NativePath"),
        ReadOnly<"Boolean", &Exists>("Exists"),
        ReadOnly<"Boolean", &IsDirectory>("Directory"),
        ReadOnly<"Int64", &Length>("Length"),
        ReadOnly<"FolderItem", &Parent>("Parent"),
        ReadOnly<"Integer", &Count>("Count"),
        ReadOnly<"String", &NativePath>("AbsolutePath"),
        ReadOnly<"String", &Name>("DisplayName"),
        ReadOnly<"Boolean", &IsReadable>("IsReadable"),
        ReadOnly<"Boolean", &IsWriteable>("IsWriteable"),
        ReadOnly<"Boolean", &IsVisible>("Visible"),
        ReadOnly<"Date", &ModificationDate>("ModificationDate"),
        ReadOnly<"Integer", &LastErrorCode>("LastErrorCode"),
    };
    static const sdk::MethodRecord functions[] = {
        sdk::SharedMethod<"GetFolderItem(path as string) as FolderItem", Guarded<&GetFolderItem>>(0),
        sdk::SharedMethod<"TemporaryFolder as FolderItem", Guarded<&TemporaryFolder>>(0),
    };
    definition.destructor = &Destroy;
    SetMethods(definition, methods);
    SetProperties(definition, properties);
    RegisterOrAbort(runtime, definition);
    RegisterSpecialFolder(runtime);
    runtime.RegisterFunctions(functions);
    runtime.Bind<sdk::kREALFSRefFromFolderItem>(&FillReference);
    runtime.Bind<sdk::kREALFSSpecFromFolderItem>(&FillReference);
}

}  // namespace host
