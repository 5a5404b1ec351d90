// Elementary functions to more bits than a double has, in some tens of plain double steps.
//
// Arguments are cut down with small tables to at most 2^-7, where short polynomials serve; only
// their first terms need two doubles. Each states by how much of the result it may err.
#pragma once

#include "plugin/rows/DoubleDouble.h"

namespace rows {

// Beyond it neither the doubles that stand for π / 2 nor the words of fixed-point numbers suffice.
constexpr double kLargestAngle = 1024;

struct Circle {
    DoubleDouble sine, cosine;
};

// 2^-27 < |angle| <= kLargestAngle.
constexpr double kCircleError = 0x1p-64;
Circle EstimateCircle(double angle);

// Finite x above 0.
constexpr double kLogError = 0x1p-80;
DoubleDouble EstimateLog(double x);

// mantissa × 2^exponent, the mantissa from 1 to 2 or a little beyond either.
struct ScaledEstimate {
    DoubleDouble mantissa;
    int exponent;
};

// e^t for |t| < 750, where t itself may err by kLogError of it.
constexpr double kExpError = 0x1p-64;
ScaledEstimate EstimateExp(const DoubleDouble& t);

}  // namespace rows
