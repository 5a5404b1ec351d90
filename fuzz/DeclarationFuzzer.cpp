// Any bytes as the declaration of a method and of a constant.
#include <cstdint>
#include <string_view>

#include "host/calls/Declaration.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    std::string problem;
    host::Declaration declaration;
    if (host::ReadDeclaration(text, declaration, problem)) {
        // What was understood can be written and is then understood the same.
        host::Declaration again;
        if (!host::ReadDeclaration(host::DeclarationText(declaration), again, problem)) __builtin_trap();
        if (!host::SameSignature(declaration, again)) __builtin_trap();
    }
    host::ConstantDeclaration constant;
    host::ReadConstant(text, constant, problem);
    return 0;
}
