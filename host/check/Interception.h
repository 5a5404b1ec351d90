// Stands between a loaded library and the functions of the system that it calls: they fail on demand.
//
// The places through which the library reaches them are redirected, so nobody else notices: neither
// the host nor other libraries, nor what a host function does when the library calls it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/check/LoadedLibrary.h"

namespace host::check {

enum class SystemService {
    Memory,  // malloc and its kin, operator new
    Files,   // open, write, mmap and others that make, grow and map files
};

// Redirects a library's calls for the rest of the process; gives the names of the functions that it
// imports of those known.
std::vector<std::string> InterceptCalls(const LoadedLibrary& library, SystemService service);

// While it lives, intercepted calls number `nth` up to `nth + count - 1` (counted from 1) fail: with
// ENOMEM or ENOSPC, `new` with std::bad_alloc.
class FailingCalls {
  public:
    FailingCalls(std::int64_t nth, std::int64_t count);
    ~FailingCalls();
    FailingCalls(const FailingCalls&) = delete;
    FailingCalls& operator=(const FailingCalls&) = delete;

    std::int64_t failed() const;
    std::string lastFailed() const;  // the function's name
};

}  // namespace host::check
