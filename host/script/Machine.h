// Runs compiled scripts.
//
// All calls of the script share one stack of frames, also those that come from outside: an event
// that a plug-in raises in the middle of one of its methods, a destructor, a timer. Such a call
// runs in an Execute of its own above the frames that wait. Exceptions travel as C++ exceptions
// (host::Raised) inside the host and never through a plug-in: there they are marked as raised and
// taken up again when the plug-in's method returns.
#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "host/calls/Runtime.h"
#include "host/script/Bytecode.h"
#include "host/script/Compiler.h"

namespace script {

// Deeper recursion is a StackOverflowException.
inline constexpr std::size_t kMostFrames = 50'000;
inline constexpr std::size_t kMostStackValues = 1'500'000;

// Thrown to end the script at once, without Catch or Finally.
struct Terminated {
    int exitCode;
};

// Where a routine stood when an exception was raised.
struct TraceLine {
    const Function* function;
    Position at;
};

// What stands behind an exception that no Catch took.
struct Failure {
    host::Ref<host::Object> exception;
    std::vector<TraceLine> trace;  // the innermost first; long ones are cut
    std::size_t omitted = 0;       // lines cut
};

// One use of a member of the host or its plug-ins: a method called or assigned to, or a property read
// or set.
struct MemberUse {
    const host::Method* method = nullptr;  // or
    const host::Property* property = nullptr;
    host::Object* self = nullptr;  // null for functions and shared members
    std::span<const host::Value> arguments;
    const host::Value* assigned = nullptr;  // the new value, where there is one
    Position at;

    const std::string& Name() const { return method ? method->declaration.name : property->name; }
    const host::Class* Owner() const { return method ? method->owner : property->owner; }
};

// Sees what a script does with members of the host and its plug-ins, and what it prints where.
struct MemberObserver {
    virtual ~MemberObserver() = default;
    virtual void Before(const MemberUse&) {}
    virtual void After(const MemberUse&, const host::Value& /*result*/) {}
    virtual void OnNil(const MemberUse&) {}  // the member was asked of Nil; an exception follows
    virtual void Printed(std::string_view /*line*/, Position) {}
};

class Machine {
  public:
    Machine(Code& code, Symbols& symbols);
    ~Machine();
    Machine(const Machine&) = delete;
    Machine& operator=(const Machine&) = delete;

    // Runs the program to its end. Throws Terminated, or host::Raised for an exception that
    // nobody took: LastFailure then tells more. The program's variables keep their values.
    void Run();

    // What the program leaves behind. Local variables of its blocks that an exception or Quit left
    // as they were; the globals' values.
    void DropLocals() noexcept;
    std::span<host::Value> Globals() const { return {globals_, stack_ ? symbols_.globals.size() : 0}; }
    void DropGlobals() noexcept;

    // Throws as Run does for what destructors raised since.
    void CheckEnd();

    // A program that grows (Session.h): its globals live on from step to step. RunStep runs the code's
    // main function, and throws as Run does.
    void BeginSteps();
    void RunStep();

    const Failure& LastFailure() const { return failure_; }
    void ForgetFailure() { failure_ = {}; }

    // Calls a routine from the host; what leaves it is host::Raised alone.
    host::Value Invoke(const Function& function, host::Object* self, std::span<host::Value> arguments);

    // The routine that an object's class has for a method.
    Function* FindOverride(const host::Class& type, const RoutineSymbol& declared) const;

    // Asks the running script to end. May be called from a signal handler.
    static void Interrupt();

    std::function<void(std::string_view)> print;  // takes each line of Print, without its end
    std::vector<MemberObserver*> observers;

  private:
    struct Frame {
        const Function* function;
        const Instruction* next;  // the one after the call that is under way
        host::Value* registers;
        host::Value* result;  // where the caller wants it; null: nowhere
    };

    void MakeStack();
    const Function& ProgramFrame() const;
    void Execute(std::size_t floor);
    void Loop(std::size_t floor);
    bool Unwind(std::size_t floor, host::Ref<host::Object> exception);
    void CaptureTrace(host::Object* exception);
    host::Value* PushFrame(const Function& function, host::Value* result);
    void PopFrame();
    void PopTo(std::size_t floor);
    void CheckNativeStack() const;
    void CheckAttention();
    void HeedDestructors();
    void CheckRaised();
    Position Here() const;
    void Print(std::string_view line) const;

    // --- Operations that may raise (MachineOperations.cpp, MachineCalls.cpp)
    void Perform(Instruction instruction, const Function& function, host::Value* r, const Instruction* next);
    void PerformArray(Instruction instruction, const Function& function, host::Value* r);
    void MakeArray(Instruction instruction, const Function& function, host::Value* r);
    void EnterCall(Instruction instruction, const Function& caller, host::Value* r);
    void EnterDelegate(Instruction instruction, const Function& caller, host::Value* r);
    void AddHandler(Instruction instruction, const Function& function, host::Value* r);
    const Function& CodeOf(const host::Value& delegate, host::Value& target) const;
    bool CallQuick(const CallSite& site, host::Value* r, std::uint16_t target);
    void CallNative(Instruction instruction, const Function& function, host::Value* r);
    void CallSetter(Instruction instruction, const Function& function, host::Value* r);
    void GetProperty(Instruction instruction, const Function& function, host::Value* r);
    void SetProperty(Instruction instruction, const Function& function, host::Value* r);
    void ReadProperty(const host::Property& property, host::Object* self, host::Value& target);
    void WriteProperty(const host::Property& property, host::Object* self, const host::Value& value);
    void LoadPlace(const host::Value& reference, host::Value& target);
    void StorePlace(const host::Value& reference, const host::Value& value);
    void MakePropertyReference(Instruction instruction, const Function& function, host::Value* r);
    void NewObject(Instruction instruction, const Function& function, host::Value* r);
    // Where it is used is filled in for those who observe it.
    template <class Work>
    host::Value Observe(MemberUse use, const Work& work);
    [[noreturn]] void FailOnNil(MemberUse use, const host::RaisedMessage& what) const;
    static void RefuseHusk(const MemberUse& use);
    [[noreturn]] static void FailOnHusk(const MemberUse& use);
    host::Ref<host::Object> Raising(const host::Value& exception);

    Code& code_;
    Symbols& symbols_;
    std::unique_ptr<std::byte[]> memory_;  // of all registers, once the program runs
    host::Value* stack_ = nullptr;
    std::vector<Frame> frames_;
    host::Value* globals_ = nullptr;
    std::size_t globalCount_ = 0;     // of a program that grows
    std::uintptr_t nativeLimit_ = 0;  // lowest address that calls from outside may reach on the stack
    bool terminating_ = false;
    int exitCode_ = 0;
    bool raising_ = false;  // by a Raise, which keeps the trace of an exception raised before
    const host::Object* traced_ = nullptr;
    bool caught_ = false;
    Failure failure_;
};

// Throws an exception of a class, made by the runtime.
[[noreturn]] void Throw(const host::Raising& what);

}  // namespace script
