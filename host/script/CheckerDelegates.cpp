// Delegates: the addresses of routines, calls through them, and handlers of events.
#include <algorithm>

#include "host/script/Checker.h"

namespace script {

namespace {

// Whether a routine may be called wherever the delegate is: the same parameters and result, or objects of
// a class above.
bool Serves(const Signature& routine, const Signature& delegate) {
    const auto takes = [](const ParameterSymbol& wanted, const ParameterSymbol& given) {
        if (wanted.byRef != given.byRef) return false;
        if (wanted.type == given.type) return true;
        return IsObject(wanted.type) && IsObject(given.type) && !wanted.byRef &&
               Inherits(given.type.of, wanted.type.of);
    };
    return routine.result == delegate.result &&
           std::equal(routine.parameters.begin(), routine.parameters.end(), delegate.parameters.begin(),
                      delegate.parameters.end(), takes);
}

}  // namespace

// Finds the routines of the name, and keeps the object that they are to be called on.
void Checker::CheckAddressOf(Expression& expression) {
    ExpressionPtr named = std::move(expression.operands[0]);
    expression.operands.clear();
    expression.type = {Base::Address};
    if (named->node == Node::Member) {
        ExpressionPtr& object = named->operands[0];
        UnfoldModule(object);
        if (const ClassSymbol* holder = FindHolder(*object)) {
            expression.routines = symbols_.FindRoutines(*holder, named->text);
            std::erase_if(expression.routines, [](const RoutineSymbol* routine) { return routine->HasReceiver(); });
        } else {
            CheckValue(object);
            if (IsWrong(object->type)) return Wrong(expression, {});
            if (IsObject(object->type)) expression.routines = symbols_.FindRoutines(*object->type.of, named->text);
            expression.operands.push_back(std::move(object));
        }
    } else if (named->node == Node::Name) {
        if (context_.owner) expression.routines = symbols_.FindRoutines(*context_.owner, named->text);
        if (!expression.routines.empty() && context_.hasSelf)
            expression.operands.push_back(
                MakeExpression(Node::Self, {Base::Object, false, context_.owner}, expression.at));
        for (const Candidate& candidate : OwnRoutines(named->text))
            if (expression.routines.empty() || !candidate.routine->owner)
                expression.routines.push_back(candidate.routine);
        if (expression.routines.empty())
            for (const ClassSymbol* module : ModulesWith(named->text))
                for (RoutineSymbol* routine : symbols_.FindRoutines(*module, named->text))
                    expression.routines.push_back(routine);
    }
    std::erase_if(expression.routines, [&](const RoutineSymbol* routine) {
        return !MayReach(routine->owner, routine->isPrivate) || (routine->HasReceiver() && expression.operands.empty());
    });
    if (expression.routines.empty())
        Wrong(expression, kNameSays.notAddressable(named->text.empty() ? "" : "; " + named->text + " is none"));
}

RoutineSymbol* Checker::FindAddressed(const Expression& address, Type delegate) const {
    if (!IsObject(delegate) || !delegate.of->invoke) return nullptr;
    for (RoutineSymbol* routine : address.routines)
        if (Serves(routine->signature, *delegate.of->invoke)) return routine;
    return nullptr;
}

void Checker::MakeAddressed(Expression& address, Type delegate) const {
    address.routine = FindAddressed(address, delegate);
    address.node = Node::NewDelegate;
    address.type = delegate;
    if (!address.routine->HasReceiver()) address.operands.clear();
}

bool Checker::ResolveInvoke(ExpressionPtr& expression, ExpressionPtr& delegate, std::vector<ExpressionPtr>& arguments,
                            bool wantsValue) {
    const Signature* invoke = delegate->type.of->invoke.get();
    if (!invoke || !host::SameName(expression->text, "Invoke")) return false;
    const Candidate candidate{invoke, nullptr, nullptr};
    if (!Choose({candidate}, arguments, wantsValue, expression->at)) {
        Wrong(*expression, {});
        return true;
    }
    ExpressionPtr call = MakeExpression(Node::CallDelegate, invoke->result, expression->at);
    call->depth = expression->depth;
    call->operands.push_back(std::move(delegate));
    for (ExpressionPtr& argument : FitArguments(*invoke, arguments)) call->operands.push_back(std::move(argument));
    expression = std::move(call);
    return true;
}

// The delegate that handles an event of a class of the host.
const ClassSymbol* Checker::DelegateOf(const host::Event& event, const ClassSymbol& type, Position at) {
    const ClassSymbol* declarer = &type;
    while (declarer->declaration || declarer->native != event.owner) declarer = declarer->base;
    const std::string name = "handler " + event.declaration.name + " of " + declarer->name;
    if (ClassSymbol* known = symbols_.FindClass(name)) return known;
    const auto fromHost = [this](const host::Type& hostType) { return symbols_.FromHost(hostType); };
    return MakeDelegate(name, HandlerOf(host::WithTypes<Type>(event.declaration, fromHost), *declarer), at);
}

// "AddHandler object.Event, delegate": of an event that a class of the script declares it is the property
// that holds the handler; CheckCallStatement makes an assignment of it.
void Checker::CheckHandle(Expression& expression) {
    const bool removes = expression.direct;
    const Position at = expression.at;
    ExpressionPtr named = std::move(expression.operands[0]);
    ExpressionPtr handler = std::move(expression.operands[1]);
    expression.operands.clear();
    ExpressionPtr object;
    if (named->node == Node::Member) object = std::move(named->operands[0]);
    if (named->node == Node::Name) object = MakeExpression(Node::Self, kNoType, at);
    if (!object) return Wrong(expression, kNameSays.noEventOfObject());
    CheckValue(object);
    CheckValue(handler);
    if (IsWrong(object->type) || IsWrong(handler->type)) return Wrong(expression, {});
    const ClassSymbol* type = IsObject(object->type) ? object->type.of : nullptr;
    FieldSymbol* field = type ? symbols_.FindField(*type, "handler " + named->text) : nullptr;
    const host::Event* event = type && !field ? FindNativeEvent(*type, named->text) : nullptr;
    if (!field && !event) return Wrong(expression, kNameSays.noEvent(NameOf(object->type), named->text));
    const Type wanted = field ? field->type : Type{Base::Object, false, DelegateOf(*event, *type, at)};
    Convert(handler, wanted, "the handler");
    if (IsWrong(handler->type)) return Wrong(expression, {});
    if (removes) {
        handler = MakeExpression(Node::NilLiteral, wanted, at);
    }
    expression.node = field ? Node::Field : Node::Handle;
    expression.type = field ? field->type : kNoType;
    expression.event = event;
    if (field) {
        expression.owner = field->owner;
        expression.fieldIndex = field->slot;
    }
    expression.operands.push_back(std::move(object));
    expression.operands.push_back(std::move(handler));
}

}  // namespace script
