// What the language itself knows by name: members of arrays, texts, colours and variants; Print,
// Array and Ubound; and assignments to members.
#include <algorithm>
#include <deque>

#include "host/calls/Runtime.h"
#include "host/script/Checker.h"

namespace script {

namespace {

enum class ArrayArgument : std::uint8_t { None, Element, Index, Arrays };

struct ArrayMember {
    std::string_view name;
    ArrayMethodKind kind;
    std::size_t least;           // arguments that it needs
    ArrayArgument arguments[2];  // that it takes; Arrays stands for any number

    std::size_t Most() const {
        if (arguments[0] == ArrayArgument::Arrays) return SIZE_MAX;
        return static_cast<std::size_t>(2 -
                                        std::count(std::begin(arguments), std::end(arguments), ArrayArgument::None));
    }
};

constexpr ArrayMember kArrayMembers[] = {
    {"Append", ArrayMethodKind::Append, 1, {ArrayArgument::Element}},
    {"Insert", ArrayMethodKind::Insert, 2, {ArrayArgument::Index, ArrayArgument::Element}},
    {"Remove", ArrayMethodKind::Remove, 1, {ArrayArgument::Index}},
    {"Ubound", ArrayMethodKind::Ubound, 0, {ArrayArgument::Index}},
    {"ReDim", ArrayMethodKind::ReDim, 1, {ArrayArgument::Index}},
    {"Sort", ArrayMethodKind::Sort, 0, {}},
    {"SortWith", ArrayMethodKind::SortWith, 1, {ArrayArgument::Arrays}},
    {"Shuffle", ArrayMethodKind::Shuffle, 0, {}},
    {"Pop", ArrayMethodKind::Pop, 0, {}},
    {"IndexOf", ArrayMethodKind::IndexOf, 1, {ArrayArgument::Element, ArrayArgument::Index}},
};

// "1 argument", "1 or 2 arguments", "1 argument or more".
std::string CountText(const ArrayMember& member) {
    std::string text = std::to_string(member.least);
    if (member.Most() == member.least + 1) text += " or " + std::to_string(member.Most());
    text += member.Most() == 1 || text == "1" ? " argument" : " arguments";
    return member.Most() == SIZE_MAX ? text + " or more" : text;
}

Type ResultOf(ArrayMethodKind kind, Type element) {
    switch (kind) {
        case ArrayMethodKind::Ubound:
        case ArrayMethodKind::IndexOf:
            return kIntegerType;
        case ArrayMethodKind::Pop:
            return element;
        default:
            return kNoType;
    }
}

}  // namespace

bool Checker::ResolveArrayMember(ExpressionPtr& expression, ExpressionPtr& receiver,
                                 std::vector<ExpressionPtr>& arguments) {
    const std::string name = expression->text;
    const auto* member = std::find_if(std::begin(kArrayMembers), std::end(kArrayMembers),
                                      [&](const ArrayMember& row) { return host::SameName(row.name, name); });
    if (member == std::end(kArrayMembers)) return false;
    const Type element = ElementOf(receiver->type);
    if (IsGrid(receiver->type) && member->kind != ArrayMethodKind::Ubound) {
        Wrong(*expression, kCallSays.arrayMethodOfGrid(member->name, NameOf(receiver->type)));
        return true;
    }
    if (arguments.size() < member->least || arguments.size() > member->Most()) {
        Wrong(*expression, kCallSays.arrayMethodCount(member->name, CountText(*member)));
        return true;
    }
    const bool sorts = member->kind == ArrayMethodKind::Sort || member->kind == ArrayMethodKind::SortWith;
    if (sorts && !IsNumeric(element) && !IsString(element)) {
        Wrong(*expression, kCallSays.cannotSort(NameOf(receiver->type)));
        return true;
    }
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const ArrayArgument argument = member->arguments[std::min(i, std::size_t{1})];
        if (argument == ArrayArgument::Element) Convert(arguments[i], element, "the element");
        if (argument == ArrayArgument::Index) Convert(arguments[i], kIntegerType, "the index");
    }
    if (member->kind == ArrayMethodKind::SortWith)
        for (ExpressionPtr& argument : arguments)
            if (!IsWrong(argument->type) && (!argument->type.array || IsGrid(argument->type)))
                Wrong(*argument, kCallSays.cannotSortWith(NameOf(argument->type)));
    ExpressionPtr call = MakeExpression(Node::ArrayMethod, ResultOf(member->kind, element), expression->at);
    call->arrayMethod = member->kind;
    call->depth = expression->depth;
    call->operands.push_back(std::move(receiver));
    for (ExpressionPtr& argument : arguments) call->operands.push_back(std::move(argument));
    expression = std::move(call);
    return true;
}

namespace {

constexpr std::pair<std::string_view, IntrinsicKind> kColorMembers[] = {
    {"Red", IntrinsicKind::RedOf}, {"Green", IntrinsicKind::GreenOf}, {"Blue", IntrinsicKind::BlueOf}};

// A variant as one type; Base::Object is any object.
constexpr std::pair<std::string_view, Base> kVariantViews[] = {
    {"IntegerValue", Base::Integer}, {"Int32Value", Base::Integer}, {"Int64Value", Base::Int64},
    {"UInt32Value", Base::UInt32},   {"UInt64Value", Base::UInt64}, {"DoubleValue", Base::Double},
    {"SingleValue", Base::Single},   {"StringValue", Base::String}, {"BooleanValue", Base::Boolean},
    {"ColorValue", Base::Color},     {"ObjectValue", Base::Object}};

}  // namespace

std::vector<std::string> Checker::ValueMembers(Type type) {
    std::vector<std::string> names;
    if (type.array)
        for (const ArrayMember& member : kArrayMembers) names.emplace_back(member.name);
    else if (type == kColorType)
        for (const auto& [name, kind] : kColorMembers) names.emplace_back(name);
    else if (IsVariant(type))
        for (const auto& [name, view] : kVariantViews) names.emplace_back(name);
    else if (IsString(type))
        for (const std::string& name : host::Runtime::Get().FunctionNames())
            if (!TextFunctions(name).empty()) names.push_back(name);
    for (const std::string& name : host::Runtime::Get().FunctionNames())
        for (const Candidate& candidate : FunctionCandidates(name, true))
            if (candidate.signature->parameters[0].type == type) names.push_back(name);
    return names;
}

// The global functions that take a text first.
std::vector<Candidate> Checker::TextFunctions(std::string_view name) {
    std::vector<Candidate> candidates;
    for (const NativeMethod* native : symbols_.Functions(name)) {
        const auto& parameters = native->signature.parameters;
        if (!parameters.empty() && IsString(parameters[0].type))
            candidates.push_back({&native->signature, nullptr, native});
    }
    return candidates;
}

// Members of values that are no objects. A text's are the global functions that take a text
// first: name.Len is Len(name).
bool Checker::ResolveValueMember(ExpressionPtr& expression, ExpressionPtr& receiver,
                                 std::vector<ExpressionPtr>& arguments, bool wantsValue) {
    const std::string name = expression->text;
    const Type type = receiver->type;
    if (type == kColorType && arguments.empty()) {
        for (const auto& [part, kind] : kColorMembers) {
            if (!host::SameName(part, name)) continue;
            ExpressionPtr access = MakeExpression(Node::Intrinsic, kIntegerType, expression->at);
            access->intrinsic = kind;
            access->depth = expression->depth;
            access->operands.push_back(std::move(receiver));
            expression = std::move(access);
            return true;
        }
    }
    if (IsVariant(type) && arguments.empty()) {
        for (const auto& [view, base] : kVariantViews) {
            if (!host::SameName(view, name)) continue;
            ForceConvert(receiver, {base, false, base == Base::Object ? symbols_.object : nullptr});
            expression = std::move(receiver);
            return true;
        }
    }
    if (!IsString(type)) return false;
    const std::vector<Candidate> candidates = TextFunctions(name);
    if (candidates.empty()) return false;
    arguments.insert(arguments.begin(), std::move(receiver));
    ResolveCall(expression, candidates, nullptr, arguments, wantsValue);
    return true;
}

// What both can be: a wider number, a common class, or else a variant.
Type Checker::JoinedType(Type a, Type b) const {
    if (a == b || b == kNilType) return a;
    if (a == kNilType) return b;
    if (IsNumeric(a) && IsNumeric(b)) return CommonType(a, b);
    if (IsObject(a) && IsObject(b))
        for (const ClassSymbol* type = a.of; type; type = type->base)
            if (Inherits(b.of, type)) return {Base::Object, false, type};
    return kVariantType;
}

void Checker::MakeArrayOf(Expression& expression, std::vector<ExpressionPtr> arguments) {
    if (arguments.empty()) return Wrong(expression, kCallSays.emptyArray());
    Type element = arguments[0]->type;
    for (const ExpressionPtr& argument : arguments) {
        if (IsWrong(argument->type)) return Wrong(expression, {});
        if (argument->type.base == Base::Address) return Wrong(expression, kCallSays.arrayOfAddresses());
        if (argument->type.array) return Wrong(expression, kCallSays.arrayOfArrays());
        element = JoinedType(element, argument->type);
    }
    if (element == kNilType) element = kVariantType;
    for (ExpressionPtr& argument : arguments) Convert(argument, element, "the element");
    expression.node = Node::MakeArray;
    expression.type = ArrayOf(element);
    expression.operands = std::move(arguments);
}

bool Checker::ResolveIntrinsic(ExpressionPtr& expression, std::vector<ExpressionPtr>& arguments) {
    const std::string name = expression->text;
    if (host::SameName(name, "Array")) {
        MakeArrayOf(*expression, std::move(arguments));
        return true;
    }
    if (host::SameName(name, "Ubound")) {
        if (arguments.empty() || arguments.size() > 2)
            return Wrong(*expression, kCallSays.uboundCount(arguments.size())), true;
        if (IsWrong(arguments[0]->type) || !arguments[0]->type.array) {
            Wrong(*expression, IsWrong(arguments[0]->type) ? host::Said() : kCallSays.uboundOfOther());
            return true;
        }
        std::vector<ExpressionPtr> dimension;
        if (arguments.size() == 2) dimension.push_back(std::move(arguments[1]));
        return ResolveArrayMember(expression, arguments[0], dimension);
    }
    if (host::SameName(name, "Print")) {
        if (arguments.size() > 1) {
            Wrong(*expression, kCallSays.printCount());
            return true;
        }
        for (const ExpressionPtr& argument : arguments)
            if (IsWrong(argument->type)) return Wrong(*expression, {}), true;
        for (ExpressionPtr& argument : arguments)
            if (argument->type.base == Base::Address)
                return Wrong(*expression, kCallSays.showAddress()), true;
            else if (FindOperatorConvert(argument->type, kStringType))
                ForceConvert(argument, kStringType);
        expression->node = Node::Intrinsic;
        expression->intrinsic = IntrinsicKind::Print;
        expression->type = kNoType;
        expression->operands = std::move(arguments);
        return true;
    }
    if (host::SameName(name, "Quit")) {
        if (arguments.size() > 1) return Wrong(*expression, kCallSays.quitCount()), true;
        for (ExpressionPtr& argument : arguments) Convert(argument, kIntegerType, "the exit code");
        expression->node = Node::Intrinsic;
        expression->intrinsic = IntrinsicKind::Quit;
        expression->type = kNoType;
        expression->operands = std::move(arguments);
        return true;
    }
    return false;
}

// --- Assignments to members: "x.Width = 3", "block.Byte(4) = 5"

// The methods that an assignment to this member may call, and the object they are called on.
std::vector<Candidate> Checker::AssignableCandidates(Expression& member, ExpressionPtr& receiver) {
    std::vector<Candidate> all;
    const auto add = [&](const std::vector<RoutineSymbol*>& routines) {
        for (RoutineSymbol* routine : routines)
            if (TakesAssignment(routine->signature) && MayReach(routine->owner, routine->isPrivate))
                all.push_back({&routine->signature, routine, nullptr});
    };
    const auto addOpen = [&] {
        const auto own = symbols_.routines.find(host::LowerName(member.text));
        if (own != symbols_.routines.end()) add(own->second);
        for (const ClassSymbol* module : ModulesWith(member.text)) add(symbols_.FindRoutines(*module, member.text));
    };
    if (member.node == Node::Name) {
        if (FindLocal(member.text)) return all;
        if (context_.owner) add(symbols_.FindRoutines(*context_.owner, member.text));
        if (context_.hasSelf && !all.empty())
            receiver = MakeExpression(Node::Self, {Base::Object, false, context_.owner}, member.at);
        if (all.empty() && !FindGlobal(member.text)) addOpen();
        return all;
    }
    ExpressionPtr& object = member.operands[0];
    if (object->node == Node::Super) return all;
    UnfoldModule(object);
    if (const ClassSymbol* holder = FindHolder(*object)) {
        add(symbols_.FindRoutines(*holder, member.text));
        std::erase_if(all, [](const Candidate& candidate) { return candidate.routine->HasReceiver(); });
        for (const NativeMethod* native : symbols_.SharedMethods(*holder, member.text))
            if (native->method->assignable()) all.push_back({&native->signature, nullptr, native});
        return all;
    }
    CheckValue(object);
    if (IsObject(object->type)) {
        add(symbols_.FindRoutines(*object->type.of, member.text));
        for (const Candidate& candidate : MethodCandidates(*object->type.of, member.text, false))
            if (candidate.native && candidate.native->method->assignable()) all.push_back(candidate);
    }
    if (all.empty()) {
        addOpen();
        std::erase_if(all, [](const Candidate& candidate) { return !candidate.signature->parameters[0].extends; });
    }
    if (!all.empty()) receiver = std::move(object);
    return all;
}

// Whether the target is a call of a method that can be assigned to; it is then one with the value.
bool Checker::ResolveAssignableCall(Statement& statement) {
    Expression& target = *statement.expressions[0];
    Expression& member = target.node == Node::Apply ? *target.operands[0] : target;
    if (member.node != Node::Member && member.node != Node::Name) return false;
    ExpressionPtr receiver;
    std::vector<Candidate> candidates = AssignableCandidates(member, receiver);
    if (candidates.empty()) return false;
    std::deque<Signature> setters;
    for (Candidate& candidate : candidates) {
        if (!candidate.native) continue;
        Signature& setter = setters.emplace_back(*candidate.signature);
        setter.result = kNoType;
        ParameterSymbol& assigned = setter.parameters.emplace_back();
        assigned.name = "value";
        assigned.type = candidate.signature->result;
        candidate.signature = &setter;
    }
    std::vector<ExpressionPtr> arguments;
    for (std::size_t i = 1; target.node == Node::Apply && i < target.operands.size(); ++i)
        arguments.push_back(std::move(target.operands[i]));
    CheckArguments(arguments);
    CheckValue(statement.expressions[1]);
    arguments.push_back(std::move(statement.expressions[1]));
    const bool extends = receiver && candidates[0].routine && !candidates[0].routine->HasReceiver();
    if (extends && candidates[0].signature->parameters[0].extends)
        arguments.insert(arguments.begin(), std::move(receiver));
    ExpressionPtr call = MakeExpression(Node::Nothing, kNoType, member.at);
    if (ResolveCall(call, candidates, std::move(receiver), arguments, false)) {
        if (call->node == Node::CallNative) call->node = Node::CallSetter;
        call->type = call->node == Node::CallSetter ? kNoType : call->type;
    }
    statement.action = Action::Call;
    statement.expressions.clear();
    statement.expressions.push_back(std::move(call));
    return true;
}

// The target was resolved to the reading of a property: it becomes the writing.
bool Checker::ResolvePropertySet(Statement& statement) {
    Expression& target = *statement.expressions[0];
    if (target.node != Node::GetProperty) return false;
    if (!target.property->writable()) {
        Wrong(target, kNameSays.readOnly(target.property->name));
        return true;
    }
    Convert(statement.expressions[1], target.type, "the value");
    target.node = Node::SetProperty;
    target.type = kNoType;
    target.operands.push_back(std::move(statement.expressions[1]));
    statement.action = Action::Call;
    statement.expressions.pop_back();
    return true;
}

void Checker::CheckAssign(Statement& statement) {
    if (ResolveAssignableCall(statement)) return;
    CheckExpression(statement.expressions[0], false);
    CheckValue(statement.expressions[1]);
    if (IsWrong(statement.expressions[0]->type) || IsWrong(statement.expressions[1]->type)) return;
    if (ResolvePropertySet(statement) || ResolveAccessorSet(statement)) return;
    Expression& target = *statement.expressions[0];
    switch (target.node) {
        case Node::Local:
        case Node::Global:
        case Node::Field:
        case Node::Element:
            return Convert(statement.expressions[1], target.type, "the value");
        default:
            Wrong(target, IsLiteral(target) ? kNameSays.assignConstant() : kNameSays.assignValue());
    }
}

}  // namespace script
