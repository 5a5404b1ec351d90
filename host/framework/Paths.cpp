// Paths made absolute and tidy without asking the file system.
#include "host/framework/Paths.h"

#include <unistd.h>
#include <utf8proc.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>

namespace host {

namespace {

bool Exists(const std::string& path) { return access(path.c_str(), F_OK) == 0; }

}  // namespace

std::string AbsolutePath(std::string_view path) {
    std::error_code error;
    const std::filesystem::path whole = std::filesystem::current_path(error) / path;
    std::string text = whole.lexically_normal().string();
    while (text.size() > 1 && text.back() == '/') text.pop_back();
    // A path may begin with two slashes; here that means no more than one.
    while (text.size() > 1 && text[0] == '/' && text[1] == '/') text.erase(0, 1);
    return text;
}

std::string NameOfPath(const std::string& path) { return path == "/" ? path : path.substr(path.rfind('/') + 1); }

std::string FolderOfPath(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    return slash == 0 ? "/" : path.substr(0, slash);
}

std::string Decomposed(const std::string& text) {
    utf8proc_uint8_t* decomposed = nullptr;
    const utf8proc_ssize_t length =
        utf8proc_map(reinterpret_cast<const utf8proc_uint8_t*>(text.data()), static_cast<utf8proc_ssize_t>(text.size()),
                     &decomposed, static_cast<utf8proc_option_t>(UTF8PROC_STABLE | UTF8PROC_DECOMPOSE));
    if (length < 0) return text;
    std::string result(reinterpret_cast<const char*>(decomposed), static_cast<std::size_t>(length));
    std::free(decomposed);
    return result;
}

bool FillFileReference(const std::string& path, sdk::FileReference& reference) {
    const std::string folder = FolderOfPath(path), decomposed = Decomposed(folder);
    const bool onlyAsGiven = folder != decomposed && !Exists(decomposed) && Exists(folder);
    std::string whole = onlyAsGiven ? folder : decomposed;
    if (whole != "/") whole += "/";
    if (path == "/")
        whole = path;
    else
        whole += Decomposed(NameOfPath(path));
    if (whole.size() >= sdk::kPathCapacity) return false;
    reference.exists = Exists(path) || Exists(whole);
    std::memcpy(reference.path, whole.c_str(), whole.size() + 1);
    return true;
}

}  // namespace host
