// Frames, exceptions on their way through them, and calls that come from outside.
#include "host/script/Machine.h"

#include <sys/resource.h>

#include <algorithm>
#include <cstring>

#include "host/calls/Border.h"
#include "host/calls/Call.h"
#include "host/messages/RunningMessages.h"
#include "host/script/MachineAccess.h"
#include "host/script/Place.h"

namespace script {

namespace {

// Set from signal handlers.
std::atomic<bool> interrupted{false};

constexpr std::size_t kMostTraceLines = 24;
constexpr int kInterruptedExitCode = 130;

}  // namespace

void Throw(const host::Raising& what) { throw host::Raised{host::Runtime::Get().MakeException(what)}; }

void Machine::Interrupt() {
    interrupted.store(true, std::memory_order_relaxed);
    attention.store(true, std::memory_order_relaxed);
}

Machine::Machine(Code& code, Symbols& symbols) : code_(code), symbols_(symbols) {
    rlimit limit{};
    getrlimit(RLIMIT_STACK, &limit);
    constexpr std::size_t kUsual = 8 << 20;
    const std::size_t size = limit.rlim_cur == RLIM_INFINITY ? kUsual : std::min<std::size_t>(limit.rlim_cur, 64 << 20);
    // A plug-in's own functions need room too: a quarter is theirs.
    nativeLimit_ = reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0)) - size / 4 * 3;
}

Machine::~Machine() = default;

void Machine::CheckNativeStack() const {
    if (reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0)) < nativeLimit_)
        Throw(host::kScriptRaises.tooDeep());
}

Position Machine::Here() const {
    if (frames_.empty()) return {};
    const Frame& frame = frames_.back();
    return frame.function->positions[static_cast<std::size_t>(frame.next - frame.function->code.data() - 1)];
}

void Machine::Print(std::string_view line) const {
    if (print) print(line);
    for (MemberObserver* observer : observers) observer->Printed(line, Here());
}

// A fresh frame above the last one.
host::Value* Machine::PushFrame(const Function& function, host::Value* result) {
    host::Value* base = stack_;
    if (!frames_.empty()) base = frames_.back().registers + frames_.back().function->prototype.size();
    const std::size_t size = function.prototype.size();
    if (frames_.size() >= kMostFrames || static_cast<std::size_t>(base - stack_) + size > kMostStackValues)
        Throw(host::kScriptRaises.tooDeep());
    // A prototype holds numbers, nil and texts that are constants, which no frame gives up: all may be
    // copied as bytes.
    if (size > 0) std::memcpy(static_cast<void*>(base), function.prototype.data(), size * sizeof(host::Value));
    frames_.push_back({&function, function.code.data(), base, result});
    return base;
}

// References go one by one, and with each whatever they held last: its destructor may run script
// code above this frame.
void Machine::PopFrame() {
    const Function& function = *frames_.back().function;
    host::Value* registers = frames_.back().registers;
    for (const std::uint16_t index : function.references) {
        if (registers[index].bits() == 0 && registers[index].kind() != host::Kind::None) continue;
        registers[index] = function.prototype[index];
    }
    frames_.pop_back();
}

void Machine::PopTo(std::size_t floor) {
    while (frames_.size() > std::max<std::size_t>(floor, 1)) PopFrame();
}

void Machine::CheckAttention() {
    attention.store(false, std::memory_order_relaxed);
    if (interrupted.exchange(false)) {
        terminating_ = true;
        exitCode_ = kInterruptedExitCode;
    }
    CheckRaised();
}

// After anything of the host ran: what it raised takes effect now.
void Machine::CheckRaised() {
    if (terminating_) {
        terminating_ = false;  // destructors run as ever while the frames go
        throw Terminated{exitCode_};
    }
    host::Runtime::Get().ThrowIfRaised();
}

void Machine::CaptureTrace(host::Object* exception) {
    const bool same = exception == traced_ && (raising_ || !caught_);
    raising_ = false;
    caught_ = false;
    if (same) return;
    traced_ = exception;
    failure_.trace.clear();
    failure_.omitted = 0;
    const std::size_t first = code_.globals ? 1 : 0;
    for (std::size_t i = frames_.size(); i-- > first;) {
        const Frame& frame = frames_[i];
        const auto at = static_cast<std::size_t>(frame.next - frame.function->code.data());
        if (failure_.trace.size() + 1 >= kMostTraceLines && i > first) {
            ++failure_.omitted;
            continue;
        }
        failure_.trace.push_back({frame.function, frame.function->positions[at == 0 ? 0 : at - 1]});
    }
}

// Goes to the innermost handler above the floor; false, with the frames gone, when there is none.
bool Machine::Unwind(std::size_t floor, host::Ref<host::Object> exception) {
    CaptureTrace(exception.get());
    while (frames_.size() > floor) {
        Frame& frame = frames_.back();
        const Function& function = *frame.function;
        const auto next = static_cast<std::uint32_t>(frame.next - function.code.data());
        const std::uint32_t at = next == 0 ? 0 : next - 1;
        for (const Handler& handler : function.handlers) {
            if (at < handler.from || at >= handler.to) continue;
            frame.registers[handler.exception] = host::Value(std::move(exception));
            frame.next = function.code.data() + handler.target;
            caught_ = true;
            return true;
        }
        if (frames_.size() == 1) break;  // the program's own, with the globals
        PopFrame();
    }
    failure_.exception = exception;
    return false;
}

void Machine::Execute(std::size_t floor) {
    for (;;) {
        host::Ref<host::Object> exception;
        try {
            return Loop(floor);
        } catch (const Terminated&) {
            PopTo(floor);
            throw;
        } catch (...) {
            exception = host::CurrentException();
        }
        if (!Unwind(floor, exception)) throw host::Raised{exception};
    }
}

void Machine::MakeStack() {
    memory_.reset(new std::byte[(kMostStackValues + 1) * sizeof(host::Value)]);  // untouched until it is used
    stack_ = reinterpret_cast<host::Value*>(memory_.get());
    frames_.reserve(kMostFrames + 1);
    failure_.trace.reserve(kMostTraceLines);
    globals_ = stack_;
}

void Machine::Run() {
    attention = interrupted.load();  // it may have come before the program began
    MakeStack();
    PushFrame(*code_.main, nullptr);
    Execute(0);
    CheckEnd();
}

void Machine::CheckEnd() {
    try {
        CheckAttention();
    } catch (const host::Raised& raised) {
        // Out of the last destructors it comes without a trace of this run.
        if (!(failure_.exception == raised.exception)) failure_ = {raised.exception, {}, 0};
        throw;
    }
}

void Machine::BeginSteps() {
    MakeStack();
    PushFrame(*code_.globals, nullptr);
    globalCount_ = code_.globals->prototype.size();
}

void Machine::RunStep() {
    attention = interrupted.load();
    const auto& prototype = code_.globals->prototype;
    std::memcpy(static_cast<void*>(globals_ + globalCount_), prototype.data() + globalCount_,
                (prototype.size() - globalCount_) * sizeof(host::Value));
    globalCount_ = prototype.size();
    PushFrame(*code_.main, nullptr);
    Execute(1);
    CheckEnd();
}

// The function in whose frame the globals are the first registers.
const Function& Machine::ProgramFrame() const { return code_.globals ? *code_.globals : *code_.main; }

void Machine::DropLocals() noexcept {
    if (!stack_) return;
    for (const std::uint16_t index : ProgramFrame().references)
        if (index >= symbols_.globals.size()) globals_[index] = ProgramFrame().prototype[index];
}

void Machine::DropGlobals() noexcept {
    for (std::size_t i = 0; i < Globals().size(); ++i) globals_[i] = ProgramFrame().prototype[i];
}

host::Value Machine::Invoke(const Function& function, host::Object* self, std::span<host::Value> arguments) {
    // A chain of destructors may go on for ever without a loop or a call that would look.
    if (interrupted.exchange(false)) {
        terminating_ = true;
        exitCode_ = kInterruptedExitCode;
        WantAttention();
    }
    if (terminating_) return {};
    CheckNativeStack();
    const std::size_t floor = frames_.size();
    host::Value result;
    host::Value* registers = PushFrame(function, &result);
    std::size_t next = 0;
    const bool receives = function.parameters.size() > arguments.size();
    if (receives) registers[function.parameters[next++]] = host::Value(host::Ref<host::Object>::Share(self));
    for (host::Value& argument : arguments) {
        const std::uint16_t index = function.parameters[next];
        const std::size_t parameter = next++ - (receives ? 1 : 0);
        const bool byRef = function.routine && function.routine->signature.parameters[parameter].byRef;
        registers[index] = byRef ? ReferenceTo(argument) : argument;
    }
    try {
        Execute(floor);
    } catch (const Terminated& end) {
        terminating_ = true;
        exitCode_ = end.exitCode;
        WantAttention();
        return {};
    }
    return result;
}

Function* Machine::FindOverride(const host::Class& type, const RoutineSymbol& declared) const {
    const std::string lower = host::LowerName(declared.signature.name);
    for (const host::Class* at = &type; at; at = at->superclass()) {
        for (const ClassSymbol* symbol : symbols_.scriptClasses) {
            if (symbol->made != at) continue;
            const auto found = symbol->routines.find(lower);
            if (found == symbol->routines.end()) continue;
            for (RoutineSymbol* routine : found->second)
                if (SameParameters(routine->signature, declared.signature)) return routine->code;
        }
    }
    return declared.code;
}

}  // namespace script
