// MPFR's functions, rounded once to a double.
#include "tests/support/TrueValues.h"

#include <mpfr.h>

namespace support {

namespace {

// Numbers of a double's precision and range.
class Number {
  public:
    explicit Number(double value = 0) {
        mpfr_set_emin(-1073);
        mpfr_set_emax(1024);
        mpfr_init2(number_, 53);
        mpfr_set_d(number_, value, MPFR_RNDN);
    }
    ~Number() { mpfr_clear(number_); }
    Number(const Number&) = delete;
    Number& operator=(const Number&) = delete;

    mpfr_ptr get() { return number_; }

    // The double, after a function gave which way it rounded.
    double Rounded(int ternary) {
        mpfr_subnormalize(number_, ternary, MPFR_RNDN);
        return mpfr_get_d(number_, MPFR_RNDN);
    }

  private:
    mpfr_t number_;
};

template <class Function>
double Rounded(Function function, double x) {
    Number argument(x), result;
    return result.Rounded(function(result.get(), argument.get(), MPFR_RNDN));
}

int Evaluate(Function function, mpfr_ptr result, mpfr_srcptr x) {
    switch (function) {
        case Function::Sin:
            return mpfr_sin(result, x, MPFR_RNDN);
        case Function::Cos:
            return mpfr_cos(result, x, MPFR_RNDN);
        case Function::Log:
            return mpfr_log(result, x, MPFR_RNDN);
        default:
            return mpfr_exp(result, x, MPFR_RNDN);
    }
}

}  // namespace

double TrueSin(double x) { return Rounded(mpfr_sin, x); }
double TrueCos(double x) { return Rounded(mpfr_cos, x); }
double TrueTan(double x) { return Rounded(mpfr_tan, x); }
double TrueLog(double x) { return Rounded(mpfr_log, x); }

double TruePow(double x, double y) {
    Number base(x), exponent(y), result;
    return result.Rounded(mpfr_pow(result.get(), base.get(), exponent.get(), MPFR_RNDN));
}

double RelativeError(Function function, double x, double high, double low) {
    Number argument(x);
    mpfr_t exact, error;
    mpfr_inits2(200, exact, error, nullptr);
    Evaluate(function, exact, argument.get());
    mpfr_set_d(error, high, MPFR_RNDN);
    mpfr_add_d(error, error, low, MPFR_RNDN);
    mpfr_sub(error, error, exact, MPFR_RNDN);
    mpfr_div(error, error, exact, MPFR_RNDN);
    const double relative = mpfr_get_d(error, MPFR_RNDN);
    mpfr_clears(exact, error, nullptr);
    return relative;
}

}  // namespace support
