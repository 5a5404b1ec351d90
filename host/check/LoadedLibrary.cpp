// Reads the dynamic section and the segments of a library in memory.
#include "host/check/LoadedLibrary.h"

#include <dlfcn.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>

#include "host/calls/PluginLoader.h"
#include "host/messages/LoadMessages.h"

namespace host::check {

namespace {

// The head of the linker's hash table of symbols, which alone tells how many there are.
struct HashHead {
    std::uint32_t bucketCount;
    std::uint32_t firstSymbol;  // symbols before it are imports
    std::uint32_t filterWords;  // of the size of an address
    std::uint32_t filterShift;
};

struct Segments {
    ElfW(Addr) base;
    const void* address;
    bool found;
};

int LookIntoSegments(dl_phdr_info* info, std::size_t, void* data) {
    auto& look = *static_cast<Segments*>(data);
    if (info->dlpi_addr != look.base) return 0;
    const auto at = reinterpret_cast<ElfW(Addr)>(look.address);
    for (int i = 0; i < info->dlpi_phnum; ++i) {
        const ElfW(Phdr)& segment = info->dlpi_phdr[i];
        const ElfW(Addr) start = info->dlpi_addr + segment.p_vaddr;
        const bool code = segment.p_type == PT_LOAD && (segment.p_flags & PF_X);
        look.found |= code && at >= start && at < start + segment.p_memsz;
    }
    return 1;
}

}  // namespace

LoadedLibrary::LoadedLibrary(const std::string& path) {
    void* library = dlopen(std::filesystem::absolute(path).c_str(), RTLD_NOW | RTLD_NOLOAD);
    void* map = nullptr;
    if (!library || dlinfo(library, RTLD_DI_LINKMAP, &map) != 0) throw LoadError(kLoadSays.notLoaded(path));
    map_ = static_cast<const link_map*>(map);
    dlclose(library);  // one reference less; it stays loaded
}

ElfW(Xword) LoadedLibrary::Number(ElfW(Sxword) tag) const {
    for (const ElfW(Dyn)* entry = map_->l_ld; entry->d_tag != DT_NULL; ++entry)
        if (entry->d_tag == tag) return entry->d_un.d_val;
    return 0;
}

template <class T>
const T* LoadedLibrary::Table(ElfW(Sxword) tag) const {
    const ElfW(Addr) address = Number(tag);
    // Most linkers have made it an address already.
    return reinterpret_cast<const T*>(address == 0 || address >= map_->l_addr ? address : address + map_->l_addr);
}

std::vector<std::string> LoadedLibrary::Needed() const {
    std::vector<std::string> names;
    const char* const texts = Table<char>(DT_STRTAB);
    for (const ElfW(Dyn)* entry = map_->l_ld; entry->d_tag != DT_NULL; ++entry)
        if (entry->d_tag == DT_NEEDED) names.emplace_back(texts + entry->d_un.d_val);
    return names;
}

// The highest symbol that a bucket begins with, and from there to the end of its chain, which the
// lowest bit marks.
std::size_t LoadedLibrary::SymbolCount() const {
    const auto* const head = Table<HashHead>(DT_GNU_HASH);
    if (!head) return 0;
    const auto* const filter = reinterpret_cast<const ElfW(Addr)*>(head + 1);
    const auto* const buckets = reinterpret_cast<const std::uint32_t*>(filter + head->filterWords);
    const std::uint32_t* const chains = buckets + head->bucketCount;
    std::uint32_t last = head->bucketCount > 0 ? *std::max_element(buckets, buckets + head->bucketCount) : 0;
    if (last < head->firstSymbol) return head->firstSymbol;
    while (!(chains[last - head->firstSymbol] & 1)) ++last;
    return last + 1;
}

std::vector<Symbol> LoadedLibrary::Exports() const {
    std::vector<Symbol> exports;
    const auto* const symbols = Table<ElfW(Sym)>(DT_SYMTAB);
    const char* const texts = Table<char>(DT_STRTAB);
    for (std::size_t i = 1; i < SymbolCount(); ++i)
        if (symbols[i].st_shndx != SHN_UNDEF)
            exports.push_back({texts + symbols[i].st_name, ELF64_ST_BIND(symbols[i].st_info) != STB_GLOBAL});
    return exports;
}

bool LoadedLibrary::HasCodeAt(const void* address) const {
    Segments look{map_->l_addr, address, false};
    dl_iterate_phdr(&LookIntoSegments, &look);
    return look.found;
}

void LoadedLibrary::AddImports(const ElfW(Rela) * relocations, std::size_t bytes, std::string_view function,
                               std::vector<void**>& places) const {
    const auto* const symbols = Table<ElfW(Sym)>(DT_SYMTAB);
    const char* const texts = Table<char>(DT_STRTAB);
    for (std::size_t i = 0; relocations && i < bytes / sizeof(*relocations); ++i) {
        const ElfW(Sym)& symbol = symbols[ELF64_R_SYM(relocations[i].r_info)];
        if (symbol.st_shndx == SHN_UNDEF && texts + symbol.st_name == function)
            places.push_back(reinterpret_cast<void**>(map_->l_addr + relocations[i].r_offset));
    }
}

std::vector<void**> LoadedLibrary::ImportsOf(std::string_view function) const {
    std::vector<void**> places;
    AddImports(Table<ElfW(Rela)>(DT_JMPREL), Number(DT_PLTRELSZ), function, places);
    AddImports(Table<ElfW(Rela)>(DT_RELA), Number(DT_RELASZ), function, places);
    return places;
}

}  // namespace host::check
