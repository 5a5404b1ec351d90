// The host functions offered to plug-ins, each behind a place where it can be replaced.
//
// A plug-in keeps the addresses that the resolver gave it, so what it calls must stay at that
// address while what is called may change: each host function has a trampoline of its own, which
// counts the call, fails it if it is to fail, and calls what is bound. No C++ exception leaves a
// trampoline: it is raised (Border.h) and the trampoline gives zero.
#pragma once

#include <cstdint>
#include <functional>
#include <limits>
#include <string_view>
#include <type_traits>
#include <utility>

#include "sdk/HostFunctions.h"

namespace host {

// What all host functions have in common.
struct HostFunctionRecord {
    const char* name;
    sdk::AnyFunction trampoline;
    bool hidden = false;  // the resolver denies it; no effect on plug-ins that know the address
    std::int64_t calls = 0;

    // Calls are numbered from 1; those from failFrom up to failTo are not carried out and give
    // zero.
    std::int64_t failFrom = 0;
    std::int64_t failTo = -1;

    // Makes the nth call from now on fail, and those after it as far as `count` reaches.
    void FailCall(std::int64_t nth, std::int64_t count = 1);
    void FailAlways() { FailCall(1, std::numeric_limits<std::int64_t>::max()); }
    void FailNever() { failTo = -1; }

    // Counts a call; true when it is to fail.
    bool Enter() { return ++calls >= failFrom && calls <= failTo; }
};

void RaiseCurrent() noexcept;  // Border.h

// Adds a record to the resolver's table.
void AddHostFunction(HostFunctionRecord& record);

template <const auto& Name, class Signature>
class HostFunctionSlotOf;

template <const auto& Name, class Result, class... Arguments>
class HostFunctionSlotOf<Name, Result(Arguments...)> {
  public:
    using Function = std::function<Result(Arguments...)>;

    static void Bind(Function function) {
        if (!bound_) AddHostFunction(record_);
        bound_ = std::move(function);
    }

    // Puts another function in its place; gives the one before.
    static Function Replace(Function function) { return std::exchange(bound_, std::move(function)); }

    // Calls what is bound, past the trampoline: not counted, never made to fail.
    static Result Call(Arguments... arguments) { return bound_(arguments...); }

    static HostFunctionRecord& Record() { return record_; }

  private:
    static Result Trampoline(Arguments... arguments) noexcept {
        if (record_.Enter()) return Zero();
        try {
            return bound_(arguments...);
        } catch (...) {
            RaiseCurrent();
            return Zero();
        }
    }

    static Result Zero() {
        if constexpr (!std::is_void_v<Result>) return Result{};
    }

    static inline Function bound_;
    static inline HostFunctionRecord record_{Name.name, reinterpret_cast<sdk::AnyFunction>(&Trampoline)};
};

template <class Signature>
Signature* SignatureOf(const sdk::HostFunctionName<Signature>&);

// The slot of a name of sdk/HostFunctions.h.
template <const auto& Name>
using HostFunctionSlot = HostFunctionSlotOf<Name, std::remove_pointer_t<decltype(SignatureOf(Name))>>;

}  // namespace host
