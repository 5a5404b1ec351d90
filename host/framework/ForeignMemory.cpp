// Copies that stumble over memory which is no longer there, and come back.
#include "host/framework/ForeignMemory.h"

#include <csetjmp>
#include <csignal>
#include <cstdint>

namespace host {

namespace {

// The copy under way in this thread, and the foreign bytes that it may stumble over.
struct Attempt {
    sigjmp_buf back;
    std::uintptr_t first;
    std::uintptr_t last;
};

thread_local Attempt* attempt = nullptr;

struct Handled {
    int signal;
    struct sigaction before;
};

Handled handled[] = {{SIGSEGV, {}}, {SIGBUS, {}}};

// What is none of ours goes to whoever handled the signal before: with that handler in its place
// again the instruction faults anew; a signal that was sent is sent again.
void HandOn(int signal, const siginfo_t& info) {
    for (const Handled& one : handled)
        if (one.signal == signal) sigaction(signal, &one.before, nullptr);
    if (info.si_code <= 0) raise(signal);
}

// An address that no memory can have comes without being named.
bool IsExpected(const siginfo_t& info) {
    const auto at = reinterpret_cast<std::uintptr_t>(info.si_addr);
    return attempt && (info.si_code == SI_KERNEL || (at >= attempt->first && at <= attempt->last));
}

void OnFault(int signal, siginfo_t* info, void*) {
    if (IsExpected(*info)) siglongjmp(attempt->back, 1);
    HandOn(signal, *info);
}

bool Install() {
    for (Handled& one : handled) {
        struct sigaction action {};
        action.sa_sigaction = &OnFault;
        action.sa_flags = SA_SIGINFO | SA_NODEFER;
        sigemptyset(&action.sa_mask);
        sigaction(one.signal, &action, &one.before);
    }
    return true;
}

// The sanitizer watches memory of this program, and these bytes are not. The barriers keep the
// compiler from making a call of a watched function of it.
template <class Unit>
__attribute__((no_sanitize("address", "undefined"))) std::size_t CopyUnits(std::uint8_t* to, const std::uint8_t* from,
                                                                           std::size_t length) {
    std::size_t at = 0;
    for (; at + sizeof(Unit) <= length; at += sizeof(Unit)) {
        __builtin_memcpy(to + at, from + at, sizeof(Unit));
        asm volatile("" ::: "memory");
    }
    return at;
}

[[gnu::noinline]] void CopyBytes(std::uint8_t* to, const std::uint8_t* from, std::size_t length) {
    asm volatile("" ::: "memory");
    const std::size_t words = CopyUnits<std::uint64_t>(to, from, length);
    CopyUnits<std::uint8_t>(to + words, from + words, length - words);
}

bool Copy(void* to, const void* from, std::size_t length, const void* foreign) {
    [[maybe_unused]] static const bool installed = Install();
    Attempt own;
    own.first = reinterpret_cast<std::uintptr_t>(foreign);
    own.last = own.first + length - 1;
    if (sigsetjmp(own.back, 0) != 0) {
        attempt = nullptr;
        return false;
    }
    attempt = &own;
    CopyBytes(static_cast<std::uint8_t*>(to), static_cast<const std::uint8_t*>(from), length);
    attempt = nullptr;
    return true;
}

}  // namespace

bool ReadForeign(const void* address, void* result, std::size_t length) {
    return length == 0 || Copy(result, address, length, address);
}

bool WriteForeign(void* address, const void* bytes, std::size_t length) {
    return length == 0 || Copy(address, bytes, length, address);
}

}  // namespace host
