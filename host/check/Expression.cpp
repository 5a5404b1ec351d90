// Which arguments a parameter of each type gets, as script text and as values.
#include "host/check/Expression.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <set>

#include "host/calls/Call.h"
#include "host/calls/Declaration.h"
#include "host/calls/Overload.h"
#include "host/calls/Runtime.h"

namespace host::check {

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

// Bytes enough for the small numbers that go with a block, see Check.h.
constexpr std::int32_t kLargeBlock = 8192;

constexpr int kDrawnLists = 3;  // of arguments drawn at random, for each method

std::string NumberText(const Value& value) {
    if (value.kind() == Kind::UInt64) return Describe(value);
    if (value.IsWhole()) {
        // The most negative number has no literal: the minus is an operator.
        if (value.ToInt64() == INT32_MIN) return "-2147483647 - 1";
        if (value.ToInt64() == INT64_MIN) return "-9223372036854775807 - 1";
        return std::to_string(value.ToInt64());
    }
    const double number = value.ToDouble();
    if (std::isnan(number)) return "0.0 / 0.0";
    if (std::isinf(number)) return number > 0 ? "1e308 * 10" : "-1e308 * 10";
    return Describe(value);
}

std::vector<Expression> Literals(std::initializer_list<Value> values) {
    std::vector<Expression> expressions;
    for (const Value& value : values) expressions.push_back(Literal(value));
    return expressions;
}

// An array of `count` numbers that go down from `first`.
Expression IntegerArray(const std::string& name, int count, int first) {
    Expression expression;
    expression.text = name;
    expression.before = "Dim " + name + "(" + std::to_string(count - 1) + ") As Integer\nFor i As Integer = 0 To " +
                        std::to_string(count - 1) + "\n  " + name + "(i) = " + std::to_string(first) + " - i\nNext\n";
    expression.make = [count, first] {
        std::vector<std::int32_t> values;
        for (int i = 0; i < count; ++i) values.push_back(first - i);
        return Value(MakeIntegerArray(values));
    };
    return expression;
}

Expression EmptyArray(const std::string& name, const Type& type) {
    const Type element = ElementOf(type);
    return {name, "Dim " + name + "() As " + TypeText(element) + "\n", [element] { return Value(MakeArray(element)); }};
}

Expression InstanceExpression(const InstancePtr& instance, const std::string& name) {
    return {name, instance->script(name), [instance] { return Value(instance->make()); }};
}

Expression FunctionCall(const char* function, const std::string& argument) {
    return {std::string(function) + "(\"" + argument + "\")", "", [function, argument] {
                const Value value(argument);
                Choice choice = ChooseOverload(Runtime::Get().FindFunctions(function), {&value, 1});
                return choice.method ? Invoke(*choice.method, nullptr, choice.arguments) : Value(nullptr);
            }};
}

// --- By type --------------------------------------------------------------------------------

// How often something is done, see Check.h.
bool IsRepetition(const Parameter& parameter) {
    return parameter.type.kind == Kind::Integer && LowerName(parameter.name).find("iteration") != std::string::npos;
}

// The values of the constants that a parameter's name begins, each once.
std::vector<Value> ConstantsFor(const Parameter& parameter, const Class& owner) {
    std::vector<Value> values;
    std::set<std::int64_t> seen;
    for (const Constant& constant : owner.constants()) {
        const bool named = SameName(constant.name.substr(0, parameter.name.size()), parameter.name);
        if (named && constant.value.IsWhole() && seen.insert(constant.value.ToInt64()).second)
            values.push_back(constant.value);
    }
    // The first constant of a family is often the one that stands for none.
    if (values.size() > 2) std::rotate(values.begin(), values.begin() + 1, values.end());
    return values;
}

Choices IntegerChoices(const Parameter& parameter, std::size_t position, const Class& owner) {
    Choices choices;
    for (const Value& value : ConstantsFor(parameter, owner)) choices.usual.push_back(Literal(value));
    constexpr std::int32_t usual[] = {5, 3, 1, 2};
    if (choices.usual.empty()) choices.usual.push_back(Literal(Value(usual[position % std::size(usual)])));
    if (IsRepetition(parameter)) {
        choices.extreme = Literals({Value(0), Value(-1), Value(20), Value(std::int32_t{INT32_MIN})});
        return choices;
    }
    choices.extreme = Literals({Value(0), Value(1), Value(-1), Value(2), Value(255), Value(1'000'000),
                                Value(std::int32_t{INT32_MAX}), Value(std::int32_t{INT32_MIN})});
    return choices;
}

Choices ArrayChoices(const Parameter& parameter) {
    const std::string name = parameter.name + "1";
    Choices choices;
    if (parameter.type.element == Kind::Integer) {
        choices.usual = {IntegerArray(name, 25, 12), IntegerArray(name, 256, 255), IntegerArray(name, 9, 5)};
        choices.extreme = {IntegerArray(name, 1, INT32_MAX), IntegerArray(name, 300, INT32_MIN + 300)};
    }
    choices.extreme.push_back(EmptyArray(name, parameter.type));
    choices.extreme.push_back(Literal(Value(nullptr)));
    if (choices.usual.empty()) choices.usual.push_back(choices.extreme.front());
    return choices;
}

// The first instance of the first constructor; then the first ones of the others, and those that
// are not as constructed.
Choices OwnObjectChoices(const Parameter& parameter, const Class& type, const Supply& supply) {
    Choices choices;
    const std::string name = parameter.name + "1";
    for (const InstancePtr& instance : supply.InstancesOf(type)) {
        if (instance->constructed && !instance->first) continue;
        const bool usual = instance->constructed && choices.usual.empty();
        (usual ? choices.usual : choices.extreme).push_back(InstanceExpression(instance, name));
    }
    choices.usual.push_back(Literal(Value(nullptr)));
    return choices;
}

Choices HostObjectChoices(const Parameter& parameter, const Supply& supply) {
    const std::string& type = parameter.type.className;
    Choices choices;
    const Expression nil = Literal(Value(nullptr));
    if (SameName(type, "MemoryBlock")) {
        choices.usual = {NewExpression(type, Literals({Value(64)}))};
        choices.extreme = {NewExpression(type, Literals({Value(0)})), NewExpression(type, Literals({Value(1)})),
                           NewExpression(type, Literals({Value(5000)}))};
    } else if (SameName(type, "Picture")) {
        choices.usual = {NewExpression(type, Literals({Value(5), Value(3), Value(32)}))};
        for (const int depth : {24, 16, 8, 1})
            choices.extreme.push_back(NewExpression(type, Literals({Value(4), Value(2), Value(depth)})));
    } else if (SameName(type, "FolderItem")) {
        choices.usual = {FunctionCall("GetFolderItem", supply.scratchFolder + "/scratch")};
        choices.extreme = {FunctionCall("GetFolderItem", supply.scratchFolder),
                           FunctionCall("GetFolderItem", supply.scratchFolder + "/missing/file")};
    } else if (parameter.type.IsVariant()) {
        choices.usual = Literals({Value(5)});
        choices.extreme = Literals({Value("text"), Value(1.5)});
    }
    choices.extreme.push_back(nil);
    if (choices.usual.empty()) choices.usual.push_back(nil);
    return choices;
}

// A block, and numbers that don't lead out of it.
void MakeTruthful(const Declaration& declaration, std::vector<Choices>& choices) {
    for (std::size_t i = 0; i < choices.size(); ++i) {
        const Type& type = declaration.parameters[i].type;
        if (SameName(type.className, "MemoryBlock"))
            choices[i].usual = {NewExpression(type.className, Literals({Value(kLargeBlock)}))};
        if (SameName(type.className, "MemoryBlock")) choices[i].extreme = Literals({Value(nullptr)});
        if (type.kind == Kind::Integer) choices[i].extreme = Literals({Value(0), Value(1), Value(16), Value(64)});
    }
}

// Small ones, those near a power of two, and any.
std::int32_t DrawnInteger(Random& random) {
    switch (random() % 4) {
        case 0:
            return static_cast<std::int32_t>(random() % 21) - 10;
        case 1:
            return static_cast<std::int32_t>(random() % 600) - 40;
        case 2:
            return static_cast<std::int32_t>((std::uint32_t{1} << (random() % 32)) + random() % 3 - 1);
        default:
            return static_cast<std::int32_t>(random());
    }
}

// Of everyday size, or any bits that there are.
double DrawnReal(Random& random) {
    if (random() % 2 == 0) return static_cast<double>(static_cast<std::int32_t>(random() % 20'000) - 10'000) / 512;
    return std::bit_cast<double>(std::uint64_t{random()});
}

// Another stream for each declaration, so that a new member leaves the others' arguments as they are.
Random RandomFor(const Declaration& declaration, std::uint64_t seed) {
    std::uint64_t mixed = seed;
    for (const char character : DeclarationText(declaration))
        mixed = (mixed ^ static_cast<std::uint8_t>(character)) * 1099511628211U;
    return Random(mixed);
}

// Of lists that read the same only the first: with one integer, all integers at an extreme are that
// one at it.
void DropRepeated(std::vector<std::vector<Expression>>& lists) {
    std::set<std::string> seen;
    std::erase_if(lists, [&](const std::vector<Expression>& list) {
        return !seen.insert(BeforeText(list) + ListText(list)).second;
    });
}

bool TakesABlock(const Declaration& declaration) {
    return std::any_of(declaration.parameters.begin(), declaration.parameters.end(),
                       [](const Parameter& parameter) { return SameName(parameter.type.className, "MemoryBlock"); });
}

}  // namespace

std::vector<InstancePtr> Supply::InstancesOf(const Class& type) const {
    std::vector<InstancePtr> found;
    for (const InstancePtr& instance : instances)
        if (instance->type->InheritsFrom(type)) found.push_back(instance);
    return found;
}

Expression Literal(const Value& value) {
    return {value.IsNumber() ? NumberText(value) : Describe(value), "", [value] { return value; }};
}

Expression NewExpression(std::string_view className, const std::vector<Expression>& arguments) {
    const std::string name(className);
    return {"New " + name + ListText(arguments), BeforeText(arguments), [name, arguments] {
                const Class* type = Runtime::Get().FindClass(name);
                Ref<Object> object = type ? NewObject(*type) : nullptr;
                if (!object) return Value(nullptr);
                std::vector<Value> values;
                for (const Expression& argument : arguments) values.push_back(argument.make());
                Choice choice = ChooseOverload(type->FindMethods("Constructor"), values);
                if (choice.method) Invoke(*choice.method, object.get(), choice.arguments);
                return Value(std::move(object));
            }};
}

// Of a whole kind: a small number; the ends of its range and those beside 0.
Choices WholeChoices(Kind kind) {
    const auto of = [kind](std::int64_t number) { return NumberAs(Value(number), kind); };
    const Value highest = Value::OfKind(kind, static_cast<std::int64_t>(HighestOf(kind)));
    if (!RowOf(kind).isSigned) return {Literals({of(3)}), Literals({of(0), highest})};
    return {Literals({of(3)}), Literals({of(0), of(-1), highest, of(LowestOf(kind))})};
}

Choices ChoicesFor(const Parameter& parameter, std::size_t position, const Class& owner, const Supply& supply) {
    switch (parameter.type.kind) {
        case Kind::Integer:
            return IntegerChoices(parameter, position, owner);
        case Kind::Double:
        case Kind::Single:
            return {Literals({Value(1.5)}),
                    Literals({Value(0.0), Value(-1.0), Value(0.001), Value(2.0), Value(1e9), Value(1e300),
                              Value(-1e300), Value(std::nan("")), Value(kInfinity), Value(-kInfinity)})};
        case Kind::Boolean:
            return {Literals({Value(false), Value(true)}), {}};
        case Kind::Color:
            return {Literals({Value(sdk::Color{0x204080})}), Literals({Value(sdk::Color{0xFFFFFF})})};
        case Kind::String:
            return {Literals({Value("0123456789abcdef")}), Literals({Value(""), Value("x"), Value("Width")})};
        case Kind::Array:
            return ArrayChoices(parameter);
        default:
            break;
    }
    if (IsWholeKind(parameter.type.kind)) return WholeChoices(parameter.type.kind);
    const Class* type = Runtime::Get().FindClass(parameter.type.className);
    const bool own = type && std::find(supply.classes.begin(), supply.classes.end(), type) != supply.classes.end();
    return own ? OwnObjectChoices(parameter, *type, supply) : HostObjectChoices(parameter, supply);
}

Expression Drawn(const Parameter& parameter, const Choices& choices, Random& random) {
    if (random() % 3 == 0) {
        if (parameter.type.kind == Kind::Integer && !IsRepetition(parameter))
            return Literal(Value(DrawnInteger(random)));
        if (parameter.type.kind == Kind::Double) return Literal(Value(DrawnReal(random)));
    }
    const std::size_t count = choices.usual.size() + choices.extreme.size();
    const std::size_t index = random() % count;
    return index < choices.usual.size() ? choices.usual[index] : choices.extreme[index - choices.usual.size()];
}

std::vector<std::vector<Expression>> ArgumentLists(const Declaration& declaration, const Class& owner,
                                                   const Supply& supply, bool extremes) {
    const auto& parameters = declaration.parameters;
    std::vector<Choices> choices;
    for (std::size_t i = 0; i < parameters.size(); ++i) choices.push_back(ChoicesFor(parameters[i], i, owner, supply));
    const bool constructor = SameName(declaration.name, "Constructor");
    if (constructor && TakesABlock(declaration)) MakeTruthful(declaration, choices);
    std::vector<Expression> usual;
    for (const Choices& choice : choices) usual.push_back(choice.usual.front());
    std::vector<std::vector<Expression>> lists{usual};
    const auto vary = [&](std::size_t index, const Expression& expression) {
        lists.push_back(usual);
        lists.back()[index] = expression;
    };
    for (std::size_t i = 0; i < choices.size(); ++i)
        for (std::size_t j = 1; j < choices[i].usual.size(); ++j) vary(i, choices[i].usual[j]);
    if (!extremes) return lists;
    for (std::size_t i = 0; i < choices.size(); ++i)
        for (const Expression& expression : choices[i].extreme) vary(i, expression);
    if (constructor && TakesABlock(declaration)) return lists;
    // Once more with all integers at the same extreme.
    for (const Value& value : {Value(0), Value(-1), Value(std::int32_t{INT32_MAX}), Value(std::int32_t{INT32_MIN})}) {
        lists.push_back(usual);
        for (std::size_t i = 0; i < parameters.size(); ++i)
            if (parameters[i].type.kind == Kind::Integer && !IsRepetition(parameters[i]))
                lists.back()[i] = Literal(value);
    }
    Random random = RandomFor(declaration, supply.seed);
    for (int count = 0; count < kDrawnLists && !parameters.empty(); ++count) {
        lists.emplace_back();
        for (std::size_t i = 0; i < parameters.size(); ++i)
            lists.back().push_back(Drawn(parameters[i], choices[i], random));
    }
    DropRepeated(lists);
    return lists;
}

std::string ListText(const std::vector<Expression>& arguments) {
    std::string text;
    for (const Expression& argument : arguments) text += (text.empty() ? "(" : ", ") + argument.text;
    return text.empty() ? "" : text + ")";
}

std::string BeforeText(const std::vector<Expression>& arguments) {
    std::string text;
    for (const Expression& argument : arguments) text += argument.before;
    return text;
}

}  // namespace host::check
