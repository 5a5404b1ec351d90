#include "host/calls/Overload.h"

#include "host/calls/Runtime.h"

namespace host {

namespace {

constexpr int kNone = -1;
constexpr int kLossy = 12;
constexpr int kVariant = 15;
constexpr int kHostConversion = 20;

// Which kinds hold which others exactly, nearest first.
int NumberCost(Kind from, Kind to) {
    if (from == to) return 0;
    struct Row {
        Kind from;
        Kind to;
        int cost;
    };
    constexpr Row rows[] = {
        {Kind::UInt8, Kind::Integer, 1},  {Kind::UInt8, Kind::UInt32, 2},  {Kind::UInt8, Kind::Int64, 3},
        {Kind::UInt8, Kind::Double, 4},   {Kind::UInt8, Kind::Single, 5},  {Kind::Integer, Kind::Int64, 1},
        {Kind::Integer, Kind::Double, 2}, {Kind::UInt32, Kind::Int64, 1},  {Kind::UInt32, Kind::Double, 2},
        {Kind::Single, Kind::Double, 1},  {Kind::Int64, Kind::Double, 10}, {Kind::Integer, Kind::Single, 10},
        {Kind::Double, Kind::Single, 10}};
    for (const Row& row : rows)
        if (row.from == from && row.to == to) return row.cost;
    return kLossy;
}

bool IsNumberKind(Kind kind) { return kind >= Kind::Integer && kind <= Kind::Single; }

int ObjectCost(const Object* object, const Type& type) {
    if (!object) return 1;
    int steps = 0;
    for (const Class* at = object->type; at; at = at->superclass(), ++steps)
        if (SameName(at->name(), type.className)) return steps == 0 ? 0 : std::min(9 + steps, 11);
    return kNone;
}

int ArrayCost(const Value& value, const Type& type) {
    if (value.IsNil()) return 1;
    return value.array() && value.array()->element == ElementOf(type) ? 0 : kNone;
}

int PlainCost(const Value& value, const Type& type) {
    if (type.IsVariant()) return kVariant;
    if (value.IsNumber() && IsNumberKind(type.kind)) return NumberCost(value.kind(), type.kind);
    if (type.kind == Kind::Array) return ArrayCost(value, type);
    if (value.kind() != type.kind) return kNone;
    return type.kind == Kind::Object ? ObjectCost(value.object(), type) : 0;
}

// The total cost of a call, or kNone; `defaults` is how many parameters the call leaves out.
int CallCost(const Method& method, std::span<const Value> arguments, const Value* assigned, int& defaults) {
    const auto& parameters = method.declaration.parameters;
    const bool open = !parameters.empty() && parameters.back().paramArray;
    const std::size_t fixed = parameters.size() - (open ? 1 : 0);
    if (assigned && !method.assignable()) return kNone;
    if (arguments.size() < method.declaration.RequiredCount()) return kNone;
    if (arguments.size() > fixed && !open) return kNone;
    int total = 0;
    for (std::size_t i = 0; i < arguments.size() + (assigned ? 1 : 0); ++i) {
        const bool last = i == arguments.size();
        const Type type = last        ? method.declaration.result
                          : i < fixed ? parameters[i].type
                                      : ElementOf(parameters.back().type);
        const int cost = ConversionCost(last ? *assigned : arguments[i], type);
        if (cost == kNone) return kNone;
        total += cost;
    }
    defaults = static_cast<int>(fixed > arguments.size() ? fixed - arguments.size() : 0) + (open ? 1 : 0);
    return total;
}

std::vector<Value> Converted(const Method& method, std::span<const Value> arguments, const Value* assigned) {
    const auto& parameters = method.declaration.parameters;
    std::vector<Value> values;
    for (std::size_t i = 0; i < parameters.size(); ++i) {
        const Parameter& parameter = parameters[i];
        if (parameter.paramArray) {
            auto rest = MakeArray(ElementOf(parameter.type));
            for (std::size_t j = i; j < arguments.size(); ++j)
                rest->values.push_back(ConvertTo(arguments[j], rest->element));
            values.emplace_back(std::move(rest));
        } else if (i < arguments.size()) {
            values.push_back(ConvertTo(arguments[i], parameter.type));
        } else {
            values.push_back(parameter.defaultValue);
        }
    }
    if (assigned) values.push_back(ConvertTo(*assigned, method.declaration.result));
    return values;
}

std::string ArgumentTypes(std::span<const Value> arguments) {
    std::string text = "(";
    for (const Value& argument : arguments) text += (text.size() > 1 ? ", " : "") + TypeTextOf(argument);
    return text + ")";
}

std::string Complain(std::span<const Method* const> candidates, std::span<const Value> arguments, const char* what) {
    std::string text = what + ArgumentTypes(arguments) + "; there is";
    const char* between = " ";
    for (const Method* method : candidates) {
        text += between + DeclarationText(method->declaration);
        between = ", ";
    }
    return candidates.empty() ? text + " none" : text;
}

}  // namespace

int ConversionCost(const Value& value, const Type& type) {
    const int plain = PlainCost(value, type);
    if (plain != kNone) return plain;
    return Runtime::Get().FindConversion(value, type) ? kHostConversion : kNone;
}

Value ConvertTo(const Value& value, const Type& type) {
    if (type.IsVariant() || value.kind() == type.kind) {
        if (PlainCost(value, type) != kNone) return value;
    } else if (value.IsNumber() && IsNumberKind(type.kind)) {
        return NumberAs(value, type.kind);
    } else if (value.IsNil() && type.kind == Kind::Array) {
        return Value(Ref<Array>());
    }
    const Conversion* conversion = Runtime::Get().FindConversion(value, type);
    return conversion ? conversion->convert(value) : DefaultOf(type);
}

Choice ChooseOverload(std::span<const Method* const> candidates, std::span<const Value> arguments,
                      const Value* assigned) {
    Choice choice;
    int best = 0;
    int bestDefaults = 0;
    bool tie = false;
    for (const Method* method : candidates) {
        int defaults = 0;
        const int cost = CallCost(*method, arguments, assigned, defaults);
        if (cost == kNone) continue;
        const bool better = !choice.method || cost < best || (cost == best && defaults < bestDefaults);
        tie = !better && cost == best && defaults == bestDefaults ? true : better ? false : tie;
        if (!better) continue;
        choice.method = method;
        best = cost;
        bestDefaults = defaults;
    }
    if (tie) {
        choice.method = nullptr;
        choice.problem = Complain(candidates, arguments, "more than one method takes ");
    } else if (!choice.method) {
        choice.problem = Complain(candidates, arguments, "no method takes ");
    } else {
        choice.arguments = Converted(*choice.method, arguments, assigned);
    }
    return choice;
}

}  // namespace host
