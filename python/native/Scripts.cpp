// Runs a script file and brings back what it printed.
#include "python/native/Scripts.h"

#include "host/framework/Application.h"
#include "host/script/ReadSource.h"
#include "host/script/Script.h"
#include "python/native/Errors.h"
#include "python/native/Gate.h"

namespace pytqx {

py::tuple RunScript(const std::string& path, const std::vector<std::string>& arguments) {
    const Inside inside;
    std::string printed, complaints;
    script::RunOptions options;
    options.print = [&printed](std::string_view line) { printed += std::string(line) + '\n'; };
    options.complain = [&complaints](std::string_view text) { complaints += text; };
    const int code = Guarded([&] {
        host::SetApplicationArguments(arguments);
        const auto source = script::ReadSource(path, options.complain);
        return source ? script::RunScript(*source, options) : 1;
    });
    return py::make_tuple(code, printed, complaints);
}

}  // namespace pytqx
