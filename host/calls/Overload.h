// Which overload a call means, and the implicit conversions of the language: one rule for calls
// that are chosen while a program runs and for those that a checker chooses before.
#pragma once

#include <compare>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "host/objects/Class.h"
#include "host/objects/Value.h"

namespace host {

// --- What a conversion costs; nearer is less. kNoConversion: there is none. The type itself: 0.

inline constexpr int kNoConversion = -1;
inline constexpr int kNilCost = 1;
inline constexpr int kExactDoubleCost = 8;  // below: a wider whole number, the sooner the nearer
inline constexpr int kExactSingleCost = 9;
inline constexpr int kLossyDoubleCost = 10;
inline constexpr int kLossySingleCost = 11;
inline constexpr int kNarrowCost = 12;  // a whole number that may lose high bits
inline constexpr int kCutCost = 13;     // a fraction is cut off; more for narrower whole numbers
inline constexpr int kToVariantCost = 30;
inline constexpr int kHostConversionCost = 31;  // Runtime::AddConversion
inline constexpr int kFromVariantCost = 32;     // and KindRow::variantStep

// Between kinds of numbers.
int NumberCost(Kind from, Kind to);

// To a class so many steps up, from 1.
int SuperclassCost(int steps);

// Of a value to a type.
int ConversionCost(const Value& value, const Type& type);

// The value as the type; ConversionCost must not be kNoConversion.
Value ConvertTo(const Value& value, const Type& type);

// --- How well arguments fit parameters: the least total cost, then the fewest defaults.

struct Fit {
    int cost = 0;
    int defaults = 0;  // parameters that the call leaves out, and a ParamArray

    auto operator<=>(const Fit&) const = default;
};

// How an argument is handed over: as its parameter, or as an element of a ParamArray.
enum class Passing { Plain, Element };

// A ParamArray takes all further arguments, or one that is such an array already. Parameters have
// `optional` and `paramArray`; costOf(index, parameter, passing) is the cost of one argument.
template <class Parameter, class CostOf>
std::optional<Fit> FitOf(const std::vector<Parameter>& parameters, std::size_t count, const CostOf& costOf) {
    Fit fit;
    std::size_t next = 0;
    for (const Parameter& parameter : parameters) {
        if (parameter.paramArray) {
            const bool whole = next + 1 == count && costOf(next, parameter, Passing::Plain) == 0;
            for (; next < count; ++next) {
                const int cost = costOf(next, parameter, whole ? Passing::Plain : Passing::Element);
                if (cost == kNoConversion) return {};
                fit.cost += cost + 1;
            }
            ++fit.defaults;
        } else if (next < count) {
            const int cost = costOf(next++, parameter, Passing::Plain);
            if (cost == kNoConversion) return {};
            fit.cost += cost;
        } else if (parameter.optional) {
            ++fit.defaults;
        } else {
            return {};
        }
    }
    return next == count ? std::optional(fit) : std::nullopt;
}

// The candidates that fit best: none, one, or several that a call can't tell apart.
// fitOf(candidate) is a std::optional<Fit>.
template <class Candidate, class FitOf>
std::vector<const Candidate*> BestFits(std::span<const Candidate> candidates, const FitOf& fitOf) {
    std::vector<const Candidate*> best;
    Fit least;
    for (const Candidate& candidate : candidates) {
        const std::optional<Fit> fit = fitOf(candidate);
        if (!fit || (!best.empty() && *fit > least)) continue;
        if (!best.empty() && *fit < least) best.clear();
        least = *fit;
        best.push_back(&candidate);
    }
    return best;
}

// --- Calls chosen while a program runs

struct Choice {
    const Method* method = nullptr;  // null: none fits, or several fit equally well
    std::vector<Value> arguments;    // converted, one for each parameter, defaults filled in
    std::string problem;             // why there is no method, naming the candidates
};

// Chooses among overloads by number and types of the arguments. With `assigned` only assignable ones count, and the
// value must convert to the result's type; it is then the last of the arguments.
Choice ChooseOverload(std::span<const Method* const> candidates, std::span<const Value> arguments,
                      const Value* assigned = nullptr);

}  // namespace host
