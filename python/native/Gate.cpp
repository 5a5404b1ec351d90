// A lock held while host code runs, and a list of references that wait for it.
#include "python/native/Gate.h"

#include <mutex>
#include <vector>

namespace pytqx {

namespace {

std::recursive_mutex& Gate() {
    static auto* const gate = new std::recursive_mutex;
    return *gate;
}

// References that wait to be given up; guarded by the interpreter's lock.
std::vector<host::Object*>& Waiting() {
    static auto* const waiting = new std::vector<host::Object*>;
    return *waiting;
}

int depth = 0;  // guarded by the gate

// A destructor may run code of Python, and that may leave more here.
void ReleaseWaiting() {
    while (!Waiting().empty()) {
        host::Object* const object = Waiting().back();
        Waiting().pop_back();
        host::Release(object);
    }
}

}  // namespace

Inside::Inside() {
    if (!Gate().try_lock()) {
        const Unlocked unlocked;
        Gate().lock();
    }
    ++depth;
}

Inside::~Inside() {
    if (depth == 1) ReleaseWaiting();
    --depth;
    Gate().unlock();
}

void GiveUp(host::Object* object) noexcept {
    if (!object) return;
    if (Gate().try_lock()) {
        host::Release(object);
        Gate().unlock();
    } else {
        Waiting().push_back(object);
    }
}

}  // namespace pytqx
