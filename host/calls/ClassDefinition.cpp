// A class made from a plug-in's record, complaint by complaint.
#include "host/calls/ClassDefinition.h"

#include <span>

#include "host/calls/Declaration.h"
#include "host/calls/Lexer.h"
#include "host/messages/LoadMessages.h"

namespace host {

namespace {

// Far more than any class has; a count above it is a wrong record.
constexpr std::int32_t kMostMembers = 10'000;
constexpr std::int32_t kMostInstanceData = 1 << 20;

using Problems = std::vector<std::string>;

template <class Record>
std::span<Record> Records(Record* records, std::int32_t count, const char* what, Problems& problems) {
    if (count < 0 || count > kMostMembers) {
        problems.push_back(kClassSays.statesCount.Text(count, what));
        return {};
    }
    if (count > 0 && !records) {
        problems.push_back(kClassSays.noTable.Text(count, what));
        return {};
    }
    return {records, static_cast<std::size_t>(count)};
}

bool IsDeclaredTwice(const Class& type, const Method& method) {
    for (const Method& other : method.shared ? type.sharedMethods() : type.methods())
        if (SameSignature(other.declaration, method.declaration)) return true;
    return false;
}

void AddMethods(Class& type, std::span<const sdk::MethodRecord> records, bool shared, Problems& problems) {
    for (const sdk::MethodRecord& record : records) {
        Method method;
        std::string problem;
        method.shared = shared;
        bool sound = MethodFromRecord(record, method, problem);
        if (sound && IsDeclaredTwice(type, method)) {
            problem = kClassSays.comesTwice.Text(DeclarationText(method.declaration));
            sound = false;
        }
        if (sound) type.AddMethod(std::move(method));
        if (!sound) problems.push_back((shared ? "shared method " : "method ") + problem);
    }
}

// What is wrong with one direction of a property, or nothing.
std::string AccessorProblem(const sdk::Accessor& accessor, Kind kind, const sdk::ClassDefinition& definition) {
    if (accessor.function || accessor.fieldOffset < 0) return "";
    if (std::int64_t{accessor.fieldOffset} + RowOf(kind).size <= definition.instanceDataSize) return "";
    return kClassSays.fieldOutside.Text(accessor.fieldOffset, definition.instanceDataSize);
}

void AddProperty(Class& type, const sdk::PropertyRecord& record, Problems& problems) {
    if (!record.name || !record.type || !IsIdentifier(record.name) || !IsIdentifier(record.type)) {
        problems.push_back(kClassSays.noProperName.Text(record.name ? record.name : ""));
        return;
    }
    Property property;
    property.name = record.name;
    property.type = TypeNamed(record.type);
    property.flags = record.flags;
    property.getter = record.getter;
    property.setter = record.setter;
    std::string problem = AccessorProblem(record.getter, property.type.kind, *type.definition());
    if (problem.empty()) problem = AccessorProblem(record.setter, property.type.kind, *type.definition());
    if (problem.empty() && type.FindProperty(property.name) && type.FindProperty(property.name)->owner == &type)
        problem = kClassSays.comesTwice.Text("it");
    if (problem.empty() && !property.readable() && !property.writable())
        problem = kClassSays.neitherReadNorWritten.Text();
    if (problem.empty())
        type.AddProperty(std::move(property));
    else
        problems.push_back("property " + property.name + ": " + problem);
}

void AddConstant(Class& type, const sdk::ConstantRecord& record, Problems& problems) {
    ConstantDeclaration read;
    std::string problem = kClassSays.noDeclaration.Text();
    if (!record.declaration || !ReadConstant(record.declaration, read, problem)) {
        problems.push_back("constant " + problem);
        return;
    }
    const Constant* other = type.FindConstant(read.name);
    if (other && other->owner == &type) {
        problems.push_back(kClassSays.comesTwice.Text("constant " + read.name));
        return;
    }
    if (record.value != 0) read.value = Value(record.value);
    type.AddConstant({read.name, read.value, record.declaration});
}

void AddEvent(Class& type, sdk::EventRecord& record, std::intptr_t number, Problems& problems) {
    Event event;
    std::string problem = kClassSays.noDeclaration.Text();
    if (!record.declaration || !ReadDeclaration(record.declaration, event.declaration, problem)) {
        problems.push_back("event " + problem);
        return;
    }
    event.number = number;
    record.hostNumber = number;
    type.AddEvent(std::move(event));
}

bool HeadIsSound(const sdk::ClassDefinition& definition, Problems& problems) {
    if (definition.version != sdk::kInterfaceVersion)
        problems.push_back(kClassSays.version.Text(definition.version, sdk::kInterfaceVersion));
    if (!definition.name || !IsIdentifier(definition.name)) problems.push_back(kClassSays.noName.Text());
    if (definition.instanceDataSize < 0 || definition.instanceDataSize > kMostInstanceData)
        problems.push_back(kClassSays.instanceSize.Text(definition.instanceDataSize));
    return problems.empty();
}

}  // namespace

bool MethodFromRecord(const sdk::MethodRecord& record, Method& method, std::string& problem) {
    problem = kClassSays.noDeclaration.Text();
    if (!record.declaration || !ReadDeclaration(record.declaration, method.declaration, problem)) return false;
    for (const Parameter& parameter : method.declaration.parameters)
        if (parameter.byRef || parameter.paramArray) {
            problem = kClassSays.byRef.Text(method.declaration.name);
            return false;
        }
    if (method.declaration.parameters.size() > kMostParameters) {
        problem = kClassSays.tooManyArguments.Text(method.declaration.name, kMostParameters);
        return false;
    }
    if (!record.function) {
        problem = kClassSays.noFunction.Text(method.declaration.name);
        return false;
    }
    if (record.setter && method.declaration.result.kind == Kind::None) {
        problem = kClassSays.nothingToAssign.Text(method.declaration.name);
        return false;
    }
    method.function = record.function;
    method.setter = record.setter;
    method.flags = record.flags;
    return true;
}

std::unique_ptr<Class> ClassFromDefinition(sdk::ClassDefinition& definition, const Class* superclass,
                                           std::intptr_t firstEventNumber, Problems& problems) {
    if (!HeadIsSound(definition, problems)) return nullptr;
    auto type = std::make_unique<Class>(definition.name, superclass, &definition);
    definition.instanceDataOffset = type->dataOffset();
    AddMethods(*type, Records(definition.methods, definition.methodCount, "methods", problems), false, problems);
    AddMethods(*type, Records(definition.sharedMethods, definition.sharedMethodCount, "shared methods", problems), true,
               problems);
    for (const auto& record : Records(definition.properties, definition.propertyCount, "properties", problems))
        AddProperty(*type, record, problems);
    for (const auto& record : Records(definition.constants, definition.constantCount, "constants", problems))
        AddConstant(*type, record, problems);
    for (auto& record : Records(definition.events, definition.eventCount, "events", problems))
        AddEvent(*type, record, firstEventNumber++, problems);
    if (!problems.empty()) return nullptr;
    return type;
}

}  // namespace host
