// Registers classes and functions, keeps the raised exception, and yields.
#include "host/calls/Runtime.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "host/calls/Border.h"
#include "host/calls/Call.h"
#include "host/calls/ClassDefinition.h"
#include "host/calls/Exceptions.h"
#include "host/calls/HostFunctions.h"
#include "host/calls/Variant.h"
#include "host/messages/LoadMessages.h"
#include "host/messages/RunningMessages.h"

namespace host {

namespace {

std::vector<HostFunctionRecord*>& HostFunctionTable() {
    static std::vector<HostFunctionRecord*> table;
    return table;
}

sdk::AnyFunction Resolve(const char* name) {
    HostFunctionRecord* record = name ? Runtime::Get().FindHostFunction(name) : nullptr;
    return record && !record->hidden ? record->trampoline : nullptr;
}

}  // namespace

void AddHostFunction(HostFunctionRecord& record) { HostFunctionTable().push_back(&record); }

// Never destroyed: plug-ins and statics may hold objects until the process ends.
Runtime& Runtime::Make() {
    only_ = new Runtime;
    only_->Start();
    return *only_;
}

void Runtime::Start() {
    RegisterVariant(*this);
    RegisterExceptions(*this);
    spareOutOfMemory_ = OutOfMemory();
    BindCoreFunctions(*this);
}

// --- Classes ------------------------------------------------------------------------------

const Class* Runtime::RegisterClass(sdk::ClassDefinition& definition) {
    std::vector<std::string> problems;
    const char* name = definition.name ? definition.name : "";
    const Class* superclass = definition.superclass ? FindClass(definition.superclass) : nullptr;
    if (definition.superclass && !superclass)
        problems.push_back(kClassSays.unknownSuperclass.Text(definition.superclass));
    if (FindClass(name)) problems.push_back(kClassSays.nameTaken.Text());
    auto type = ClassFromDefinition(definition, superclass, eventCount_ + 1, problems);
    if (!type) {
        std::string list;
        for (const std::string& problem : problems) list += (&problem == problems.data() ? "" : "; ") + problem;
        refusal_ = kClassSays.refused.Text(name, list);
        return nullptr;
    }
    eventCount_ += definition.eventCount;
    return AddClass(std::move(type));
}

Class* Runtime::AddClass(std::unique_ptr<Class> type) {
    if (!classIndex_.emplace(type->name(), type.get()).second) return nullptr;
    return classes_.emplace_back(std::move(type)).get();
}

void Runtime::RemoveClass(const Class& type) {
    classIndex_.erase(type.name());
    std::erase_if(classes_, [&type](const auto& held) { return held.get() == &type; });
}

const Class* Runtime::FindClass(std::string_view name) const {
    const auto entry = classIndex_.find(name);
    return entry == classIndex_.end() ? nullptr : entry->second;
}

const Class& Runtime::ClassNamed(std::string_view name) const {
    const Class* type = FindClass(name);
    if (!type) {
        std::fprintf(stderr, "the host has no class %.*s\n", static_cast<int>(name.size()), name.data());
        std::abort();
    }
    return *type;
}

std::vector<const Class*> Runtime::Classes() const {
    std::vector<const Class*> classes;
    for (const auto& type : classes_) classes.push_back(type.get());
    return classes;
}

// --- Global functions ---------------------------------------------------------------------

void Runtime::RegisterFunctions(std::span<const sdk::MethodRecord> records) {
    for (const sdk::MethodRecord& record : records) {
        Method method;
        std::string problem;
        method.shared = true;
        if (!MethodFromRecord(record, method, problem)) {
            std::fprintf(stderr, "a function of the host can't be registered: %s\n", problem.c_str());
            std::abort();
        }
        functions_.AddMethod(std::move(method)).owner = nullptr;
    }
}

std::vector<const Method*> Runtime::FindFunctions(std::string_view name) const {
    return functions_.FindSharedMethods(name);
}

std::vector<std::string> Runtime::FunctionNames() const {
    std::vector<std::string> names;
    for (const Method& method : functions_.sharedMethods()) names.push_back(method.declaration.name);
    std::sort(names.begin(), names.end());
    names.erase(std::unique(names.begin(), names.end()), names.end());
    return names;
}

// --- Host functions -------------------------------------------------------------------------

HostFunctionRecord* Runtime::FindHostFunction(std::string_view name) const {
    for (HostFunctionRecord* record : HostFunctionTable())
        if (name == record->name) return record;
    return nullptr;
}

std::span<HostFunctionRecord* const> Runtime::HostFunctions() const { return HostFunctionTable(); }

sdk::AnyFunction Runtime::Entry(const char* service) {
    if (!service || std::strcmp(service, sdk::kResolverService) != 0) return nullptr;
    return reinterpret_cast<sdk::AnyFunction>(&Resolve);
}

// --- Exceptions -----------------------------------------------------------------------------

void Runtime::Raise(Ref<Object> exception) {
    if (raised_) return;
    if (exception) {
        raised_ = std::move(exception);
    } else {
        Raise(kScriptRaises.nothingRaised());
    }
}

void Runtime::Raise(const Raising& what) {
    try {
        Raise(MakeException(what));
    } catch (const std::bad_alloc&) {
        Raise(OutOfMemory());
    }
}

Ref<Object> Runtime::TakeRaised() { return std::exchange(raised_, nullptr); }

Ref<Object> Runtime::MakeException(std::string_view className, std::string_view message, std::int32_t errorNumber) {
    const Class* type = FindClass(className);
    const Class& base = ClassNamed("RuntimeException");
    Ref<Object> exception = NewObject(type && type->InheritsFrom(base) ? *type : base);
    if (!exception) throw std::bad_alloc();
    SetProperty(*base.FindProperty("Message"), exception.get(), Value(message));
    SetProperty(*base.FindProperty("ErrorNumber"), exception.get(), Value(errorNumber));
    return exception;
}

Ref<Object> Runtime::OutOfMemory() noexcept {
    try {
        return MakeException(kScriptRaises.memory());
    } catch (const std::bad_alloc&) {
        return spareOutOfMemory_;
    }
}

Value Runtime::RunGuarded(const std::function<Value()>& code) {
    Ref<Object> before = TakeRaised();
    Value result;
    Ref<Object> thrown;
    try {
        result = code();
    } catch (...) {
        thrown = CurrentException();
    }
    if (!thrown) thrown = TakeRaised();
    if (thrown) result = Value();
    raised_ = before ? std::move(before) : std::move(thrown);
    return result;
}

// --- Yield ----------------------------------------------------------------------------------

int Runtime::OnYield(std::function<void()> callback) {
    yields_.emplace_back(++yieldNumber_, std::move(callback));
    return yieldNumber_;
}

void Runtime::RemoveYield(int number) {
    std::erase_if(yields_, [number](const auto& entry) { return entry.first == number; });
}

void Runtime::Yield() {
    // A copy: a callback may add or remove callbacks.
    const auto callbacks = yields_;
    for (const auto& entry : callbacks)
        RunGuarded([&entry] {
            entry.second();
            return Value();
        });
}

// --- Conversions ------------------------------------------------------------------------------

void Runtime::AddConversion(Conversion conversion) { conversions_.push_back(std::move(conversion)); }

const Conversion* Runtime::FindConversion(const Value& value, const Type& type) const {
    for (const Conversion& conversion : conversions_) {
        if (!(conversion.to == type) || conversion.from.kind != value.kind()) continue;
        if (value.kind() != Kind::Object) return &conversion;
        const Class* from = FindClass(conversion.from.className);
        if (from && IsA(value.object(), *from)) return &conversion;
    }
    return nullptr;
}

}  // namespace host
