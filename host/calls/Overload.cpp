// Costs of conversions, and the cheapest overload by them.
#include "host/calls/Overload.h"

#include <algorithm>

#include "host/calls/Declaration.h"
#include "host/calls/Runtime.h"

namespace host {

namespace {

int ObjectCost(const Object* object, const Type& type) {
    if (!object) return kNilCost;
    int steps = 0;
    for (const Class* at = object->type; at; at = at->superclass(), ++steps)
        if (SameName(at->name(), type.className)) return steps == 0 ? 0 : SuperclassCost(steps);
    return kNoConversion;
}

int ArrayCost(const Value& value, const Type& type) {
    if (value.IsNil()) return kNilCost;
    return value.array() && value.array()->element == ElementOf(type) ? 0 : kNoConversion;
}

int PlainCost(const Value& value, const Type& type) {
    if (type.IsVariant()) return kToVariantCost;
    if (value.IsNumber() && IsNumberKind(type.kind)) return NumberCost(value.kind(), type.kind);
    if (type.kind == Kind::Array) return ArrayCost(value, type);
    if (value.kind() != type.kind) return kNoConversion;
    return type.kind == Kind::Object ? ObjectCost(value.object(), type) : 0;
}

std::optional<Fit> FitOfCall(const Method& method, std::span<const Value> arguments, const Value* assigned) {
    if (assigned && !method.assignable()) return {};
    const auto costOf = [&](std::size_t index, const Parameter& parameter, Passing passing) {
        return ConversionCost(arguments[index],
                              passing == Passing::Element ? ElementOf(parameter.type) : parameter.type);
    };
    std::optional<Fit> fit = FitOf(method.declaration.parameters, arguments.size(), costOf);
    if (!fit || !assigned) return fit;
    const int cost = ConversionCost(*assigned, method.declaration.result);
    if (cost == kNoConversion) return {};
    fit->cost += cost;
    return fit;
}

// The arguments from `next` on as the array that a ParamArray is.
Value Gathered(const Parameter& parameter, std::span<const Value> rest) {
    if (rest.size() == 1 && ConversionCost(rest[0], parameter.type) == 0) return rest[0];
    auto array = MakeArray(ElementOf(parameter.type));
    for (const Value& value : rest) array->values.push_back(ConvertTo(value, array->element));
    return Value(std::move(array));
}

// A method of a script's class may leave its type's own default unsaid.
Value DefaultOf(const Parameter& parameter) {
    return parameter.defaultValue.IsNothing() ? host::DefaultOf(parameter.type) : parameter.defaultValue;
}

std::vector<Value> Converted(const Method& method, std::span<const Value> arguments, const Value* assigned) {
    const auto& parameters = method.declaration.parameters;
    std::vector<Value> values;
    for (std::size_t i = 0; i < parameters.size(); ++i) {
        const Parameter& parameter = parameters[i];
        if (parameter.paramArray)
            values.push_back(Gathered(parameter, arguments.subspan(std::min(i, arguments.size()))));
        else
            values.push_back(i < arguments.size() ? ConvertTo(arguments[i], parameter.type) : DefaultOf(parameter));
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

namespace {

// How many kinds of whole numbers are narrower.
int WholeRank(Kind whole) {
    return static_cast<int>(std::count_if(std::begin(kKinds), std::end(kKinds), [&](const KindRow& row) {
        return row.form == NumberForm::Whole && row.digits < RowOf(whole).digits;
    }));
}

}  // namespace

int NumberCost(Kind from, Kind to) {
    if (from == to) return 0;
    if (!IsRealKind(to)) {
        if (IsRealKind(from)) return kCutCost + WholeRank(Kind::UInt64) - WholeRank(to);
        return HoldsAll(to, from) ? WholeRank(to) - WholeRank(from) : kNarrowCost;
    }
    const bool single = to == Kind::Single;
    if (!HoldsAll(to, from)) return single ? kLossySingleCost : kLossyDoubleCost;
    return single ? kExactSingleCost : kExactDoubleCost;
}

int SuperclassCost(int steps) {
    constexpr int kNearest = 2;
    constexpr int kFarthest = 9;
    return std::min(kNearest + steps, kFarthest);
}

int ConversionCost(const Value& value, const Type& type) {
    const int plain = PlainCost(value, type);
    if (plain != kNoConversion) return plain;
    return Runtime::Get().FindConversion(value, type) ? kHostConversionCost : kNoConversion;
}

Value ConvertTo(const Value& value, const Type& type) {
    if (type.IsVariant() || value.kind() == type.kind) {
        if (PlainCost(value, type) != kNoConversion) return value;
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
    const auto best =
        BestFits(candidates, [&](const Method* method) { return FitOfCall(*method, arguments, assigned); });
    if (best.empty()) {
        choice.problem = Complain(candidates, arguments, "no method takes ");
    } else if (best.size() > 1) {
        choice.problem = Complain(candidates, arguments, "more than one method takes ");
    } else {
        choice.method = *best[0];
        choice.arguments = Converted(*choice.method, arguments, assigned);
    }
    return choice;
}

}  // namespace host
