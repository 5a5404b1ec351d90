// The correctly rounded doubles of elementary functions, by a library of numbers of any length:
// what the plug-in's own functions and every reference that uses such functions are held against.
#pragma once

namespace support {

double TrueSin(double x);
double TrueCos(double x);
double TrueTan(double x);
double TrueLog(double x);
double TruePow(double x, double y);

// By how much of the true value at x a sum of two doubles differs from it.
enum class Function { Sin, Cos, Log, Exp };
double RelativeError(Function function, double x, double high, double low);

}  // namespace support
