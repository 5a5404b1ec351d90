// Makes cases from a class's members, and carries one out.
#include "host/check/Case.h"

#include "host/calls/Call.h"
#include "host/calls/Overload.h"

namespace host::check {

namespace {

std::string ResultText(const Type& type, const std::string& call) {
    if (type.kind == Kind::None) return call + "\n";
    if (type.kind == Kind::Array) return "Dim result() As " + TypeText(ElementOf(type)) + " = " + call + "\n";
    return "Dim result As " + TypeText(type) + " = " + call + "\n";
}

std::string AssignmentText(const std::string& target, std::vector<Expression> arguments) {
    const std::string value = arguments.back().text;
    arguments.pop_back();
    return target + ListText(arguments) + " = " + value + "\n";
}

}  // namespace

std::string Case::Script() const {
    std::string text = instance ? instance->script("p") : "";
    text += BeforeText(arguments);
    switch (action) {
        case Action::Call:
            return text + ResultText(method->declaration.result, "p." + method->declaration.name + ListText(arguments));
        case Action::CallShared:
            return text + ResultText(method->declaration.result,
                                     type->name() + "." + method->declaration.name + ListText(arguments));
        case Action::Construct:
            return text + "p." + method->declaration.name + ListText(arguments) + "\n";
        case Action::Assign:
            return text + AssignmentText("p." + method->declaration.name, arguments);
        case Action::Read:
            return text + ResultText(property->type, "p." + property->name);
        case Action::Write:
            return text + AssignmentText("p." + property->name, arguments);
    }
    return text;
}

bool Case::SameCall(const Case& other) const {
    return action == other.action && method == other.method && property == other.property && list == other.list;
}

Prepared::Prepared(const Case& what) : case_(what) {
    if (what.instance) {
        self_ = what.instance->make();
        ready_ = static_cast<bool>(self_);
    }
    for (std::size_t i = 0; i < what.arguments.size(); ++i) {
        Value value = what.arguments[i].make();
        const bool assigned = !what.method || i >= what.method->declaration.parameters.size();
        const Type& type = what.property ? what.property->type
                           : assigned    ? what.method->declaration.result
                                         : what.method->declaration.parameters[i].type;
        if (ConversionCost(value, type) < 0)
            ready_ = false;
        else
            arguments_.push_back(ConvertTo(value, type));
    }
}

Value Prepared::Perform() {
    std::vector<Value> values = arguments_;
    Object* self = self_.get();
    switch (case_.action) {
        case Action::Call:
        case Action::Construct:
            return Invoke(*case_.method, self, values);
        case Action::CallShared:
            return Invoke(*case_.method, nullptr, values);
        case Action::Assign: {
            const Value assigned = values.back();
            values.pop_back();
            InvokeSetter(*case_.method, self, values, assigned);
            return Value();
        }
        case Action::Read:
            return GetProperty(*case_.property, self);
        case Action::Write:
            SetProperty(*case_.property, self, values.front());
            return Value();
    }
    return Value();
}

std::string Prepared::ObjectProblem(const Value& result) const {
    if (self_ && !IsLiveObject(self_.get())) return "the instance was destroyed while it was in use";
    for (std::size_t i = 0; i < arguments_.size(); ++i)
        if (arguments_[i].object() && !IsLiveObject(arguments_[i].object()))
            return "argument " + std::to_string(i + 1) + " was destroyed while it was in use";
    const Type* declared = case_.property ? &case_.property->type : &case_.method->declaration.result;
    if (result.object() && !IsLiveObject(result.object())) return "the result is no live object";
    if (result.object() && ConversionCost(result, *declared) < 0)
        return "the result is a " + result.object()->type->name() + ", not a " + TypeText(*declared);
    return "";
}

// --- Cases ----------------------------------------------------------------------------------

namespace {

class CaseList {
  public:
    explicit CaseList(const Supply& supply) : supply_(supply) {}

    void AddMethod(const Method& method, const InstancePtr& instance, bool extremes) {
        const bool constructor = SameName(method.declaration.name, "Constructor");
        Case one{constructor ? Action::Construct : Action::Call, instance->type, &method, nullptr, instance, {}, 0};
        AddLists(one, method.declaration, extremes);
        if (!method.assignable()) return;
        Declaration setter = method.declaration;
        setter.parameters.push_back({{}, "value", method.declaration.result, {}});
        one.action = Action::Assign;
        AddLists(one, setter, extremes);
    }

    void AddProperty(const Property& property, const InstancePtr& instance) {
        Case one{Action::Read, instance->type, nullptr, &property, instance, {}, 0};
        if (property.readable()) cases_.push_back(one);
        if (!property.writable()) return;
        one.action = Action::Write;
        AddLists(one, {property.name, {{{}, "value", property.type, {}}}, {}}, instance->broad);
    }

    void AddSharedMethod(const Class& type, const Method& method) {
        AddLists({Action::CallShared, &type, &method, nullptr, nullptr, {}, 0}, method.declaration, true);
    }

    std::vector<Case> Take() { return std::move(cases_); }

  private:
    void AddLists(Case one, const Declaration& declaration, bool extremes) {
        for (auto& arguments : ArgumentLists(declaration, *one.type, supply_, extremes)) {
            one.arguments = std::move(arguments);
            cases_.push_back(one);
            ++one.list;
        }
    }

    const Supply& supply_;
    std::vector<Case> cases_;
};

}  // namespace

std::vector<Case> AllCases(const Supply& supply) {
    CaseList list(supply);
    for (const Class* type : supply.classes) {
        for (const InstancePtr& instance : supply.instances) {
            if (instance->type != type) continue;
            for (const Property& property : type->properties()) list.AddProperty(property, instance);
            for (const Method& method : type->methods()) list.AddMethod(method, instance, instance->broad);
        }
        for (const Method& method : type->sharedMethods()) list.AddSharedMethod(*type, method);
    }
    std::vector<Case> cases = list.Take();
    std::erase_if(cases, [&](const Case& one) { return supply.leftOut.count(one.Name()) > 0; });
    return cases;
}

}  // namespace host::check
