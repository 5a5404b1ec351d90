// Tests of the framework's classes and functions, reached by name as scripts reach them. The
// fixture finds leaks.
#pragma once

#include "host/calls/Overload.h"
#include "tests/host/calls/SampleTest.h"
#include "tests/host/images/ImageTestFiles.h"

namespace host {

using support::Assign;
using support::Call;
using support::CallObject;
using support::CallShared;
using support::Get;
using support::GetBool;
using support::GetInt;
using support::GetObject;
using support::GetText;
using support::New;
using support::Set;
using support::TakeThrown;

class FrameworkTest : public SampleTest {
  protected:
    TemporaryDirectory directory;
};

// Calls a global function.
template <class... Arguments>
Value Function(std::string_view name, const Arguments&... arguments) {
    const std::vector<Value> values{support::ToValue(arguments)...};
    Choice choice = ChooseOverload(Runtime::Get().FindFunctions(name), values);
    if (choice.method) return Invoke(*choice.method, nullptr, choice.arguments);
    ADD_FAILURE() << name << ": " << choice.problem;
    return Value();
}

template <class... Arguments>
std::string TextOf(std::string_view name, const Arguments&... arguments) {
    return std::string(Function(name, arguments...).text());
}

template <class... Arguments>
Ref<Object> ObjectOf(std::string_view name, const Arguments&... arguments) {
    return Ref<Object>::Share(Function(name, arguments...).object());
}

// The class of the exception that the last call raised; empty when there was none.
inline std::string RaisedClass() { return TakeThrown().className; }

inline Value Bytes(std::string_view bytes) { return Value(MakeString(bytes, sdk::Encoding::None)); }

inline std::uint32_t PixelOf(const Ref<Object>& picture, int x, int y) {
    return static_cast<std::uint32_t>(Call(GetObject(picture, "RGBSurface"), "Pixel", x, y).ToInt64());
}

inline void SetPixelOf(const Ref<Object>& picture, int x, int y, std::uint32_t color) {
    Assign(GetObject(picture, "RGBSurface"), "Pixel", {x, y}, Value(static_cast<sdk::Color>(color)));
}

}  // namespace host
