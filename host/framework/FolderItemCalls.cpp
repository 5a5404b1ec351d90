// Methods of FolderItem that open, copy, move and create, and the folders known by name.
#include "host/framework/FolderItemCalls.h"

#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "host/framework/FolderItem.h"
#include "host/framework/Paths.h"
#include "host/framework/Streams.h"
#include "host/framework/Support.h"

namespace host {

namespace {

namespace fs = std::filesystem;

std::int32_t lastError = 0;

// --- Opening --------------------------------------------------------------------------------

// Nil instead of an IOException.
template <class Open>
sdk::Object* NilOnRefusal(const Open& open) {
    lastError = 0;
    try {
        return open().Detach();
    } catch (const Raised& raised) {
        if (raised.exception->type->name() != "IOException") throw;
        constexpr std::int32_t kNoFile = -1;  // the system did not refuse: it is a folder, or a device
        const std::int32_t number = ErrorNumberOf(raised.exception.get());
        lastError = number != 0 ? number : kNoFile;
        return nullptr;
    }
}

// --- Copying and moving -----------------------------------------------------------------------

[[noreturn]] void FailWith(const std::string& path, const RaisedMessage& what, const std::error_code& error) {
    lastError = error.value();
    Fail(what(path, error.message()), error.value());
}

// Where a file goes; it must not be there.
std::string TargetFor(const std::string& from, sdk::Object* destination) {
    std::error_code error;
    std::string to = PathOf(destination);
    if (fs::is_directory(to, error)) to += (to == "/" ? "" : "/") + NameOfPath(from);
    if (fs::exists(fs::symlink_status(to, error)))
        FailWith(to, kFilesRaise.cannotWrite, std::make_error_code(std::errc::file_exists));
    return to;
}

void Copy(const std::string& from, const std::string& to) {
    std::error_code error;
    if (fs::is_directory(from, error)) FailWith(from, kFilesRaise.cannotCopy, {EISDIR, std::generic_category()});
    if (fs::exists(from, error) && !fs::is_regular_file(from, error))
        FailWith(from, kFilesRaise.cannotCopy, std::make_error_code(std::errc::not_supported));
    fs::copy_file(from, to, error);
    if (error) FailWith(from, kFilesRaise.cannotCopy, error);
}

// --- Special folders ----------------------------------------------------------------------------

sdk::ClassDefinition definition{.name = "SpecialFolder"};

std::string Variable(const char* name) {
    const char* const value = std::getenv(name);
    return value && value[0] == '/' ? value : "";
}

std::string HomePath() {
    const std::string home = Variable("HOME");
    return home.empty() ? "/" : home;
}

sdk::Object* UserHome() { return NewFolderItem(HomePath()).Detach(); }
sdk::Object* Desktop() { return NewFolderItem(HomePath() + "/Desktop").Detach(); }
sdk::Object* Documents() { return NewFolderItem(HomePath() + "/Documents").Detach(); }
sdk::Object* Pictures() { return NewFolderItem(HomePath() + "/Pictures").Detach(); }
sdk::Object* CurrentFolder() { return NewFolderItem("").Detach(); }

sdk::Object* ApplicationData() {
    const std::string configured = Variable("XDG_CONFIG_HOME");
    return NewFolderItem(configured.empty() ? HomePath() + "/.config" : configured).Detach();
}

sdk::Object* Temporary() {
    std::error_code error;
    const fs::path path = fs::temp_directory_path(error);
    return NewFolderItem(error ? "/tmp" : path.string()).Detach();
}

}  // namespace

sdk::Object* OpenAsTextFile(sdk::Object* item) {
    return NilOnRefusal([&] { return OpenTextInput(PathOf(item)); });
}

sdk::Object* CreateTextFile(sdk::Object* item) {
    return NilOnRefusal([&] { return OpenTextOutput(PathOf(item), FileStream::Mode::Create); });
}

sdk::Object* AppendToTextFile(sdk::Object* item) {
    return NilOnRefusal([&] { return OpenTextOutput(PathOf(item), FileStream::Mode::Append); });
}

sdk::Object* OpenAsBinaryFile(sdk::Object* item, bool readWrite) {
    const FileStream::Mode mode = readWrite ? FileStream::Mode::ReadWrite : FileStream::Mode::Read;
    return NilOnRefusal([&] { return OpenBinary(PathOf(item), mode); });
}

// Files have no types of their own here.
sdk::Object* CreateBinaryFile(sdk::Object* item, sdk::String*) {
    return NilOnRefusal([&] { return OpenBinary(PathOf(item), FileStream::Mode::Create); });
}

void CopyFileTo(sdk::Object* item, sdk::Object* destination) {
    lastError = 0;
    Copy(PathOf(item), TargetFor(PathOf(item), destination));
}

void MoveFileTo(sdk::Object* item, sdk::Object* destination) {
    lastError = 0;
    const std::string& from = PathOf(item);
    const std::string to = TargetFor(from, destination);
    std::error_code error;
    fs::rename(from, to, error);
    if (!error) return;
    if (error != std::errc::cross_device_link) FailWith(from, kFilesRaise.cannotMove, error);
    Copy(from, to);
    fs::remove(from, error);
    if (error) FailWith(from, kFilesRaise.cannotDelete, error);
}

std::int32_t LastErrorCode(sdk::Object*) { return lastError; }

void RegisterSpecialFolder(Runtime& runtime) {
    static const sdk::MethodRecord sharedMethods[] = {
        sdk::SharedMethod<"UserHome as FolderItem", Guarded<&UserHome>>(0),
        sdk::SharedMethod<"Desktop as FolderItem", Guarded<&Desktop>>(0),
        sdk::SharedMethod<"Documents as FolderItem", Guarded<&Documents>>(0),
        sdk::SharedMethod<"Pictures as FolderItem", Guarded<&Pictures>>(0),
        sdk::SharedMethod<"ApplicationData as FolderItem", Guarded<&ApplicationData>>(0),
        sdk::SharedMethod<"Preferences as FolderItem", Guarded<&ApplicationData>>(0),
        sdk::SharedMethod<"Temporary as FolderItem", Guarded<&Temporary>>(0),
        sdk::SharedMethod<"CurrentWorkingDirectory as FolderItem", Guarded<&CurrentFolder>>(0),
    };
    SetSharedMethods(definition, sharedMethods);
    RegisterOrAbort(runtime, definition);
}

}  // namespace host
