// Constants that tell a program what it is built for; here all of them are known beforehand.
#pragma once

#include <bit>
#include <optional>
#include <string_view>

#include "host/objects/Type.h"

namespace script {

struct BuildConstant {
    std::string_view name;
    bool value;
};

inline constexpr BuildConstant kBuildConstants[] = {
    {"TargetLinux", true},
    {"TargetUnix", true},
    {"TargetWin32", false},
    {"TargetWindows", false},
    {"TargetMacOS", false},
    {"TargetMacOSClassic", false},
    {"TargetMachO", false},
    {"TargetCarbon", false},
    {"TargetCocoa", false},
    {"TargetPPC", false},
    {"TargetX86", sizeof(void*) == 4},
    {"Target32Bit", sizeof(void*) == 4},
    {"Target64Bit", sizeof(void*) == 8},
    {"TargetBigEndian", std::endian::native == std::endian::big},
    {"TargetLittleEndian", std::endian::native == std::endian::little},
    {"TargetHasGUI", false},
    {"TargetConsole", true},
    {"DebugBuild", false},
};

inline std::optional<bool> BuildConstantNamed(std::string_view name) {
    for (const BuildConstant& constant : kBuildConstants)
        if (host::SameName(constant.name, name)) return constant.value;
    return {};
}

}  // namespace script
