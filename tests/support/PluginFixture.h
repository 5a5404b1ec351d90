// What tests of a plug-in use: the plug-in is loaded once in the process and reached by the names
// of its members, as a script reaches it.
//
//   class Gamma : public support::PluginTest {};
//
//   TEST_F(Gamma, MakesAPictureOfTheSameSize) {
//       auto picture = New("PictureTQX", 4, 3, 1);
//       auto result = CallObject(picture, "GammaFilter", nullptr, 2.2);
//       EXPECT_EQ(GetInt(result, "Width"), 4);
//   }
//
// Arguments and results are host::Value; arguments may be int, int64, double, bool, sdk::Color,
// text, Ref<Object>, nullptr or std::vector<int> (an integer array). The overload is chosen as
// the language does. A member that does not exist, or no fitting overload, fails the test.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "host/calls/Call.h"
#include "host/calls/Overload.h"
#include "host/calls/Runtime.h"
#include "host/objects/Class.h"
#include "host/objects/Value.h"
#include "tests/support/Places.h"

namespace support {

using host::Object;
using host::Ref;
using host::Value;
using Values = std::vector<Value>;
using Bytes = std::vector<std::uint8_t>;

template <class T>
Value ToValue(const T& value) {
    if constexpr (std::is_same_v<T, std::vector<int>>) {
        return Value(host::MakeIntegerArray(value));
    } else if constexpr (std::is_same_v<T, Bytes>) {
        const std::string_view text(reinterpret_cast<const char*>(value.data()), value.size());
        return Value(host::MakeString(text, sdk::Encoding::None));
    } else if constexpr (std::is_same_v<T, std::size_t> || std::is_same_v<T, long long>) {
        return Value(static_cast<std::int64_t>(value));
    } else {
        return Value(value);
    }
}

// --- Calls by name ---------------------------------------------------------------------------

// A new instance after its Constructor; the class may lack one if there are no arguments.
Ref<Object> NewWith(std::string_view className, const Values& arguments);
Value CallWith(const Ref<Object>& object, std::string_view method, const Values& arguments);
Value CallSharedWith(std::string_view className, std::string_view method, const Values& arguments);

template <class... Arguments>
Ref<Object> New(std::string_view className, const Arguments&... arguments) {
    return NewWith(className, {ToValue(arguments)...});
}

template <class... Arguments>
Value Call(const Ref<Object>& object, std::string_view method, const Arguments&... arguments) {
    return CallWith(object, method, {ToValue(arguments)...});
}

// The object that a method gives; nil for anything else.
template <class... Arguments>
Ref<Object> CallObject(const Ref<Object>& object, std::string_view method, const Arguments&... arguments) {
    return Ref<Object>::Share(CallWith(object, method, {ToValue(arguments)...}).object());
}

template <class... Arguments>
bool CallBool(const Ref<Object>& object, std::string_view method, const Arguments&... arguments) {
    return CallWith(object, method, {ToValue(arguments)...}).ToBoolean();
}

template <class... Arguments>
Value CallShared(std::string_view className, std::string_view method, const Arguments&... arguments) {
    return CallSharedWith(className, method, {ToValue(arguments)...});
}

Value Get(const Ref<Object>& object, std::string_view property);
std::int64_t GetInt(const Ref<Object>& object, std::string_view property);
bool GetBool(const Ref<Object>& object, std::string_view property);
std::string GetText(const Ref<Object>& object, std::string_view property);
Ref<Object> GetObject(const Ref<Object>& object, std::string_view property);
void Set(const Ref<Object>& object, std::string_view property, const Value& value);

// object.Method(arguments) = value.
void Assign(const Ref<Object>& object, std::string_view method, const Values& arguments, const Value& value);

// A constant of a class.
std::int64_t ConstantOf(std::string_view className, std::string_view constant);

// --- Exceptions ------------------------------------------------------------------------------

// The exception that the last call raised, taken away; both empty when there was none. A test
// that leaves one behind fails.
struct Thrown {
    std::string className;
    std::string message;
    bool operator==(const Thrown&) const = default;
};
Thrown TakeThrown();
void PrintTo(const Thrown& thrown, std::ostream* stream);

// --- Memory blocks ---------------------------------------------------------------------------

// A memory block of these bytes.
Ref<Object> MakeBlock(const Bytes& bytes);
Ref<Object> MakeBlock(std::size_t size);  // zeros

std::uint8_t* BlockAddress(const Ref<Object>& block);  // null for nil
std::int64_t BlockSize(const Ref<Object>& block);

// All bytes of a block of known size; for one around foreign bytes, say how many.
Bytes BlockBytes(const Ref<Object>& block);
Bytes BlockBytes(const Ref<Object>& block, std::size_t count);

// The bytes of a string.
Bytes TextBytes(const Value& string);

// --- Factories -------------------------------------------------------------------------------

// An object of a class of its own that inherits from PictureFactoryTQX and handles its event
// with `make`, which gives a picture or nil. Without `make` it has no handler.
using PictureMaker = std::function<Ref<Object>(int width, int height, int format)>;
Ref<Object> NewFactory(PictureMaker make);

// An object of a class that inherits from `base` and handles one of its events.
Ref<Object> NewHandler(std::string_view base, std::string_view event, host::Callable handler);

// --- Fixture ---------------------------------------------------------------------------------

// Makes a host function fail while it lives: calls number `nth` up to `nth + count - 1`.
class FailingHostFunction {
  public:
    explicit FailingHostFunction(std::string_view name, std::int64_t nth = 1,
                                 std::int64_t count = std::numeric_limits<std::int64_t>::max());
    ~FailingHostFunction();
    FailingHostFunction(const FailingHostFunction&) = delete;
    FailingHostFunction& operator=(const FailingHostFunction&) = delete;

    std::int64_t calls() const;  // while it lives

  private:
    host::HostFunctionRecord* record_;
    std::int64_t before_;
};

// How often plug-ins called a host function, since the start.
std::int64_t CallsOf(std::string_view hostFunction);

// Runs a callback at each yield while it lives.
class OnYield {
  public:
    explicit OnYield(std::function<void()> callback);
    ~OnYield();
    OnYield(const OnYield&) = delete;
    OnYield& operator=(const OnYield&) = delete;

  private:
    int number_;
};

// Loads the plug-in under test; fails the test when a host object, string or array made during
// the test is left alive, a guard byte is overwritten, a reference is given up twice, or an
// exception is left behind. Objects held by the fixture's own members must be given up before
// TearDown runs: override it and call this one last.
class PluginTest : public ::testing::Test {
  protected:
    void SetUp() override;
    void TearDown() override;

    // The plug-in to load.
    virtual std::string PluginPath() const { return PluginFile(); }

    // A path for a scratch file of this test, in a folder that goes with the test.
    std::string ScratchPath(const std::string& name);

  private:
    struct Counts;
    std::shared_ptr<Counts> before_;
    std::string scratchFolder_;
};

}  // namespace support
