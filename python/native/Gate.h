// One call at a time, and the interpreter's lock.
//
// The desk host has one thread's worth of state. Whoever touches it (calls, references, properties) is
// Inside; threads that come meanwhile wait there without the interpreter's lock. Long calls give that lock
// up while they run (Unlocked), and code of Python that the host calls in their middle takes it again
// (WithInterpreter). Nobody waits for the gate with the interpreter's lock in hand, so the two can't block
// each other. A thread that is inside may enter again: an event's handler calls members.
#pragma once

#include <Python.h>

#include "host/objects/Object.h"

namespace pytqx {

// Enter and leave with the interpreter's lock held.
class Inside {
  public:
    Inside();
    ~Inside();
    Inside(const Inside&) = delete;
    Inside& operator=(const Inside&) = delete;
};

// For the time of a long call of one who is inside.
class Unlocked {
  public:
    Unlocked() : state_(PyEval_SaveThread()) {}
    ~Unlocked() { PyEval_RestoreThread(state_); }
    Unlocked(const Unlocked&) = delete;
    Unlocked& operator=(const Unlocked&) = delete;

  private:
    PyThreadState* state_;
};

// For code that the host calls, whether or not this thread has the interpreter's lock.
class WithInterpreter {
  public:
    WithInterpreter() : state_(PyGILState_Ensure()) {}
    ~WithInterpreter() { PyGILState_Release(state_); }
    WithInterpreter(const WithInterpreter&) = delete;
    WithInterpreter& operator=(const WithInterpreter&) = delete;

  private:
    PyGILState_STATE state_;
};

// Gives up a reference from anywhere with the interpreter's lock held, such as a garbage collection: at
// once, or as soon as the call that is under way in another thread has returned.
void GiveUp(host::Object* object) noexcept;

}  // namespace pytqx
