// The weights of quick scaling, and how far its sums can be from the defined ones.
//
// The proof, with u = 2^-24, the largest relative error of a rounding to single precision, and for a
// list of n weights w with the total T, in the order in which a quick sum takes them: W[k] = w[k] / T,
// V[k] the single nearest to it, P[k] the sum of |V[0]| .. |V[k]|, and numbers x[k] from -128 to 127.
//
// 1. The quick sum is s[k] = fl(s[k - 1] + V[k] x[k]), one rounding a step, of a number that is at
//    most 128 P[k] but for earlier roundings. Steps only add their errors up, so it misses the sum
//    of V[k] x[k] by 128 u (P[0] + … + P[n - 1]) at most.
// 2. V[k] misses W[k] by u |V[k]| at most: another 128 u P[n - 1] for the sum of W[k] x[k].
// 3. What is left is of second order. Earlier roundings make s[k] larger by less than n u of itself,
//    the reciprocal of T and its product with w[k] err by 2^-52 of V[k] in all, and u |V[k]| should be
//    u |W[k]|: with n up to kMostTaps = 4096 all these stay below 2^-10 of the sum of 1 and 2, by
//    which the bound is made larger. Singles too small to be normal err by 2^-150 each; the defined
//    doubles, n products, sums and one quotient, by n + 2 parts in 2^53 of at most 4 × 255, as T's
//    reciprocal only stands where the magnitudes add up to 4 T at most (rows::Taps); and T is the
//    rounded sum of the weights, so that the W[k] add up to 1 but for n 4 / 2^53, and 128 times that is
//    what taking kMiddle off every sample misses. Together less than 2^-28, which is added.
//
// Along rows x[k] is a byte less 128, which is exact; the defined value is clamped as the quick one
// is, which moves neither further from the other, and is then rounded to a single from 0 to 255,
// which is 2^-17 at most. Down columns x[k] is such a quick value, from -128 to 127, where the
// definition has one that is ErrorAcross away at most: that is worth P[n - 1] times as much (and
// 2^-10 of it for V against W). Adding 128 less or plus the bound at the end is one more rounding,
// 2^-17 at most where the result is not beyond 256, and beyond 256 every byte is 255.
//
// Some weights leave nothing to round. Let every w[k] of a list be a multiple of 2^-20 and every W[k] a
// multiple of 2^-p, as triangles and boxes have them where a factor is a power of two, and triangles in
// every third list at 3 : 4, where two samples weigh the same. Then the definition's doubles, with 53
// bits, round no product, sum or quotient, and every quotient along rows is a multiple of 2^-p; where
// both of a sample's lists are such, the places of both directions add up. With kMostPlaces of them
// in all and 10 bits before the point, the quick sums fit into the 24 bits of a single. The bound is 0, and
// the sample is decided if it is a whole number too, as many then are.
#pragma once

#include <cstdint>

#include "plugin/buffer/Scratch.h"
#include "plugin/geometry/Contributions.h"
#include "plugin/rows/QuickScale.h"

namespace tqx {

class QuickTaps {
  public:
    // Of finished lists. False when memory is short, or when a list is one that the proof does not hold
    // for: longer than kMostTaps, or without a reciprocal. Lists a little shorter than the longest one get
    // weights of 0 at their end, which add nothing to a sum, as far as there are `samples`: neighbours that are
    // equally long are summed side by side.
    bool Build(const Contributions& lists, std::int32_t samples = 0);

    const rows::QuickTaps& operator[](std::int32_t i) const { return taps_[i]; }
    const rows::QuickTaps* Lists() const { return taps_.data(); }

    // The least p for which the weights of list i are multiples of 2^-p, exactly w / T; more than
    // kMostPlaces for none. And the most of all lists.
    int Places(std::int32_t i) const { return bounds_[i].places; }
    int MostPlaces() const { return mostPlaces_; }
    static constexpr int kMostPlaces = 13;

    // How far the value of a pixel along rows is from the defined single, at most: of the columns from
    // `first` to `end`.
    double ErrorAcross(std::int64_t first, std::int64_t end) const;

    // How far a sample of row i is from the defined quotient, with values that are `across` away from
    // the defined ones.
    double ErrorDown(std::int32_t i, double across) const;

  private:
    // What the bounds of a list are made of.
    struct Bound {
        double whole;  // P[n - 1]
        double sum;    // P[0] + … + P[n - 1]
        int places;
    };

    float Add(double weight, const rows::Taps& list, Bound& bound);
    static double ErrorOf(const Bound& bound);

    std::int32_t count_ = 0;
    int mostPlaces_ = 0;
    Scratch<rows::QuickTaps> taps_;
    Scratch<float> weights_;
    Scratch<Bound> bounds_;
};

}  // namespace tqx
