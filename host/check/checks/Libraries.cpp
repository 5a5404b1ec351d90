// What the library shows to others, and what it needs of them.
#include <algorithm>

#include "host/check/Checks.h"
#include "host/check/Findings.h"
#include "host/check/LoadedLibrary.h"
#include "host/check/Passes.h"

namespace host::check {

namespace {

// The C library in its parts, the C++ library, and what compilers bring with them.
bool IsStandard(const std::string& library) {
    const char* const standard[] = {"libc.so",      "libm.so",     "libpthread.so", "libdl.so",    "librt.so",
                                    "libstdc++.so", "libgcc_s.so", "ld-linux",      "ld64.so",     "libasan.so",
                                    "libubsan.so",  "libc++.so",   "libc++abi.so",  "libunwind.so"};
    return std::any_of(std::begin(standard), std::end(standard),
                       [&](const char* name) { return library.starts_with(name); });
}

// Linkers put them there.
bool IsOfLinker(const std::string& symbol) {
    const char* const own[] = {"_init", "_fini", "_edata", "_end", "__bss_start"};
    return std::find(std::begin(own), std::end(own), symbol) != std::end(own);
}

}  // namespace

Outcomes CheckExportedSymbols(Context& context) {
    context.Classes();
    Findings findings;
    for (const Symbol& symbol : LoadedLibrary(context.path()).Exports()) {
        const bool expected = symbol.name == sdk::kPluginMainName || IsOfLinker(symbol.name);
        const std::string fault = "is exported: another library's function of that name may take its place";
        symbol.weak ? findings.Hint(expected, symbol.name, fault) : findings.Expect(expected, symbol.name, fault);
    }
    return Only("exported-symbols", findings.Judged(std::string("only ") + sdk::kPluginMainName));
}

Outcomes CheckLinkedLibraries(Context& context) {
    context.Classes();
    Findings findings;
    std::string list;
    for (const std::string& library : LoadedLibrary(context.path()).Needed()) {
        findings.Hint(IsStandard(library), library, "is needed, which not every machine has");
        list += (list.empty() ? "" : ", ") + library;
    }
    return Only("linked-libraries", findings.Judged(list));
}

}  // namespace host::check
