// Any bytes as a script: read and checked, never run. Nothing may crash or take for ever.
#include <cstdint>
#include <string>

#include "host/calls/Runtime.h"
#include "host/framework/Framework.h"
#include "host/script/Script.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    [[maybe_unused]] static const bool assembled = (host::RegisterFramework(host::Runtime::Get()), true);
    script::CheckScript({"fuzz.rbs", std::string(reinterpret_cast<const char*>(data), size)}, [](std::string_view) {});
    return 0;
}
