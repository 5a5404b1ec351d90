// Numbers through the C library; colours by their channels; random numbers.
#include "host/framework/NumberFunctions.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <random>

#include "host/framework/Support.h"
#include "platform/TickCount.h"

namespace host {

namespace {

double AbsDouble(double value) { return std::fabs(value); }

// The most negative integer has no positive twin and stays as it is.
template <class Integer>
Integer AbsWhole(Integer value) {
    using Unsigned = std::make_unsigned_t<Integer>;
    return value < 0 ? static_cast<Integer>(Unsigned{0} - static_cast<Unsigned>(value)) : value;
}

std::int32_t SignOf(double value) { return (value > 0) - (value < 0); }

double Ceil(double value) { return std::ceil(value); }
double Floor(double value) { return std::floor(value); }
double Round(double value) { return std::round(value); }  // halves away from zero
double Sqrt(double value) { return std::sqrt(value); }
double Sin(double value) { return std::sin(value); }
double Cos(double value) { return std::cos(value); }
double Tan(double value) { return std::tan(value); }
double Asin(double value) { return std::asin(value); }
double Acos(double value) { return std::acos(value); }
double Atan(double value) { return std::atan(value); }
double Atan2(double y, double x) { return std::atan2(y, x); }
double Exp(double value) { return std::exp(value); }
double Log(double value) { return std::log(value); }
double Pow(double base, double exponent) { return std::pow(base, exponent); }

// --- Least and greatest -----------------------------------------------------------------------

// Not-a-number on either side is the result.
template <class Number>
Number Lesser(Number a, Number b) {
    return a < b || a != a ? a : b;
}

template <class Number>
Number Greater(Number a, Number b) {
    return a > b || a != a ? a : b;
}

template <class Number, Number (*Better)(Number, Number)>
Number BestOfThree(Number a, Number b, Number c) {
    return Better(Better(a, b), c);
}

template <class Number, Number (*Better)(Number, Number)>
Number BestOfFour(Number a, Number b, Number c, Number d) {
    return Better(Better(a, b), Better(c, d));
}

// --- Chance, time, colour ---------------------------------------------------------------------

double Microseconds() {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration<double, std::micro>(now).count();
}

std::int32_t Ticks() { return static_cast<std::int32_t>(platform::TickCount()); }

// The low byte of each counts.
sdk::Color MakeColor(std::int32_t red, std::int32_t green, std::int32_t blue) {
    const auto byte = [](std::int32_t value) { return static_cast<std::uint32_t>(value) & 255; };
    return static_cast<sdk::Color>(byte(red) << 16 | byte(green) << 8 | byte(blue));
}

template <sdk::Text Declaration, double (*Function)(double)>
sdk::MethodRecord OfOne() {
    return sdk::SharedMethod<Declaration, Guarded<Function>>(sdk::kMemberPortable);
}

}  // namespace

double Rnd() {
    static std::mt19937_64 generator{std::random_device{}()};
    return static_cast<double>(generator() >> 11) * 0x1p-53;
}

void RegisterNumberFunctions(Runtime& runtime) {
    using Whole = std::int32_t;
    static const sdk::MethodRecord functions[] = {
        sdk::SharedMethod<"Abs(value as integer) as integer", Guarded<&AbsWhole<Whole>>>(sdk::kMemberPortable),
        sdk::SharedMethod<"Abs(value as int64) as int64", Guarded<&AbsWhole<std::int64_t>>>(sdk::kMemberPortable),
        OfOne<"Abs(value as double) as double", &AbsDouble>(),
        sdk::SharedMethod<"Sign(value as double) as integer", Guarded<&SignOf>>(sdk::kMemberPortable),
        OfOne<"Ceil(value as double) as double", &Ceil>(),
        OfOne<"Floor(value as double) as double", &Floor>(),
        OfOne<"Round(value as double) as double", &Round>(),
        OfOne<"Sqrt(value as double) as double", &Sqrt>(),
        OfOne<"Sin(value as double) as double", &Sin>(),
        OfOne<"Cos(value as double) as double", &Cos>(),
        OfOne<"Tan(value as double) as double", &Tan>(),
        OfOne<"Asin(value as double) as double", &Asin>(),
        OfOne<"Acos(value as double) as double", &Acos>(),
        OfOne<"Atan(value as double) as double", &Atan>(),
        OfOne<"Exp(value as double) as double", &Exp>(),
        OfOne<"Log(value as double) as double", &Log>(),
        sdk::SharedMethod<"Atan2(y as double, x as double) as double", Guarded<&Atan2>>(sdk::kMemberPortable),
        sdk::SharedMethod<"Pow(base as double, exponent as double) as double", Guarded<&Pow>>(sdk::kMemberPortable),
        sdk::SharedMethod<"Min(a as integer, b as integer) as integer", Guarded<&Lesser<Whole>>>(sdk::kMemberPortable),
        sdk::SharedMethod<"Min(a as integer, b as integer, c as integer) as integer",
                          Guarded<&BestOfThree<Whole, &Lesser<Whole>>>>(sdk::kMemberPortable),
        sdk::SharedMethod<"Min(a as integer, b as integer, c as integer, d as integer) as integer",
                          Guarded<&BestOfFour<Whole, &Lesser<Whole>>>>(sdk::kMemberPortable),
        sdk::SharedMethod<"Min(a as double, b as double) as double", Guarded<&Lesser<double>>>(sdk::kMemberPortable),
        sdk::SharedMethod<"Min(a as double, b as double, c as double) as double",
                          Guarded<&BestOfThree<double, &Lesser<double>>>>(sdk::kMemberPortable),
        sdk::SharedMethod<"Min(a as double, b as double, c as double, d as double) as double",
                          Guarded<&BestOfFour<double, &Lesser<double>>>>(sdk::kMemberPortable),
        sdk::SharedMethod<"Max(a as integer, b as integer) as integer", Guarded<&Greater<Whole>>>(sdk::kMemberPortable),
        sdk::SharedMethod<"Max(a as integer, b as integer, c as integer) as integer",
                          Guarded<&BestOfThree<Whole, &Greater<Whole>>>>(sdk::kMemberPortable),
        sdk::SharedMethod<"Max(a as integer, b as integer, c as integer, d as integer) as integer",
                          Guarded<&BestOfFour<Whole, &Greater<Whole>>>>(sdk::kMemberPortable),
        sdk::SharedMethod<"Max(a as double, b as double) as double", Guarded<&Greater<double>>>(sdk::kMemberPortable),
        sdk::SharedMethod<"Max(a as double, b as double, c as double) as double",
                          Guarded<&BestOfThree<double, &Greater<double>>>>(sdk::kMemberPortable),
        sdk::SharedMethod<"Max(a as double, b as double, c as double, d as double) as double",
                          Guarded<&BestOfFour<double, &Greater<double>>>>(sdk::kMemberPortable),
        sdk::SharedMethod<"Rnd as double", Guarded<&Rnd>>(sdk::kMemberPortable),
        sdk::SharedMethod<"Microseconds as double", Guarded<&Microseconds>>(sdk::kMemberPortable),
        sdk::SharedMethod<"Ticks as integer", Guarded<&Ticks>>(sdk::kMemberPortable),
        sdk::SharedMethod<"RGB(red as integer, green as integer, blue as integer) as color", Guarded<&MakeColor>>(
            sdk::kMemberPortable),
    };
    runtime.RegisterFunctions(functions);
}

}  // namespace host
