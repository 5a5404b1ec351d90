// A library in this process as the dynamic linker sees it: what it exports, what it needs, where its
// code lies, and the places through which it calls others.
#pragma once

#include <link.h>

#include <string>
#include <string_view>
#include <vector>

namespace host::check {

struct Symbol {
    std::string name;
    bool weak = false;  // also those of which the linker keeps one in the process
};

class LoadedLibrary {
  public:
    // The library must be loaded already; throws LoadError when it is not.
    explicit LoadedLibrary(const std::string& path);

    std::vector<std::string> Needed() const;    // names of libraries
    std::vector<Symbol> Exports() const;        // that it defines for others
    bool HasCodeAt(const void* address) const;  // in one of its executable segments

    // The places that hold the address of an imported function.
    std::vector<void**> ImportsOf(std::string_view function) const;

  private:
    template <class T>
    const T* Table(ElfW(Sxword) tag) const;
    ElfW(Xword) Number(ElfW(Sxword) tag) const;
    std::size_t SymbolCount() const;
    void AddImports(const ElfW(Rela) * relocations, std::size_t bytes, std::string_view function,
                    std::vector<void**>& places) const;

    const link_map* map_;
};

}  // namespace host::check
