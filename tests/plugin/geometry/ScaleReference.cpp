// Filtered scaling as it is defined, sample by sample.
#include "tests/plugin/geometry/ScaleReference.h"

#include <algorithm>

#include "tests/support/TrueValues.h"

namespace scale_test {

namespace {

double Sinc(double u) { return u == 0 ? 1.0 : support::TrueSin(3.141592653589793 * u) / (3.141592653589793 * u); }

double Mitchell(double t) {
    const double t2 = t * t, t3 = t2 * t;
    double sum;
    if (t < 1) {
        sum = 7.0 * t3;
        sum = sum - 12.0 * t2;
        sum = sum + 5.333333333333333;
    } else {
        sum = -2.3333333333333335 * t3;
        sum = sum + 12.0 * t2;
        sum = sum - 20.0 * t;
        sum = sum + 10.666666666666666;
    }
    return sum / 6.0;
}

double Poly3(double t) {
    const double t2 = t * t, t3 = t2 * t;
    if (t < 1) return ((1.25 * t3) - (2.25 * t2)) + 1.0;
    return (((-0.75 * t3) + (3.75 * t2)) - (6.0 * t)) + 3.0;
}

double Cubic(double t) {
    const double t2 = t * t, t3 = t2 * t;
    if (t <= 1) return ((1.3333333333333333 * t3) - (2.3333333333333335 * t2)) + 1.0;
    if (t <= 2) return (((-0.5833333333333334 * t3) + (3.0 * t2)) - (4.916666666666667 * t)) + 2.5;
    return (((0.08333333333333333 * t3) - (0.6666666666666666 * t2)) + (1.75 * t)) - 1.5;
}

// Ends of the search for one list, before the cut.
void SearchEnds(double centre, double reach, bool outward, int* left, int* right) {
    *left = static_cast<int>(outward ? std::floor(centre - reach) : std::trunc(centre - reach));
    *right = static_cast<int>(outward ? std::ceil(centre + reach) : std::trunc(centre + reach));
}

double Clamp(double value) {
    if (std::isnan(value) || value < 0) return 0;
    return value > 255 ? 255 : value;
}

struct Plan {
    std::vector<int> slots;  // of the values
    bool luma = false;
    bool alpha = false;
    bool zeroRest = false;
    std::vector<std::pair<int, int>> writes;  // slot, offset in self
};

Plan PlanOf(const Format& source, const Format& self) {
    Plan plan;
    if (source.isRGB && self.isRGB) {
        plan.slots = {0, 1, 2};
        plan.alpha = source.hasAlpha && self.hasAlpha;
        plan.writes = {{0, self.red}, {1, self.green}, {2, self.blue}};
    } else if (source.isRGB) {
        plan.slots = {1};
        plan.luma = true;
        plan.alpha = source.hasAlpha && self.hasAlpha;
        plan.writes = {{1, self.red}, {1, self.green}, {1, self.blue}};
    } else if (self.isRGB) {
        plan.slots = {1};
        plan.writes = {{1, self.red}, {1, self.green}, {1, self.blue}};
    } else {
        plan.slots = {1};
        plan.alpha = source.hasAlpha && self.hasAlpha;
        plan.zeroRest = plan.alpha;
        plan.writes = {{1, self.gray}};
    }
    if (plan.alpha) {
        plan.slots.push_back(3);
        plan.writes.push_back({3, self.alpha});
    }
    return plan;
}

double SampleOf(const Plane& source, const Plan& plan, int slot, int x, int y) {
    const Format& format = source.format;
    const std::uint8_t* const pixel = source.Pixel(x, y);
    if (slot == 3) return pixel[format.alpha];
    if (format.isGray) return pixel[format.gray];
    if (plan.luma) return 0.3 * pixel[format.red] + 0.59 * pixel[format.green] + 0.11 * pixel[format.blue];
    return pixel[slot == 0 ? format.red : slot == 1 ? format.green : format.blue];
}

}  // namespace

double SupportOf(int mode) {
    constexpr double supports[] = {0, 1.0, 0.5, 3.0, 8.0, 2.0, 4.0, 3.0};
    return supports[mode];
}

double WeightOf(int mode, double x) {
    const double t = std::fabs(x);
    switch (mode) {
        case 1:
            return t < 1 ? 1.0 - t : 0.0;
        case 2:
            return t <= 0.5 ? 1.0 : 0.0;
        case 3:
            return t < 3 ? Sinc(t) * Sinc(t / 3.0) : 0.0;
        case 4:
            return t < 8 ? Sinc(t) * Sinc(t * 0.125) : 0.0;
        case 5:
            return t < 2 ? Mitchell(t) : 0.0;
        case 6:
            return t < 2 ? Poly3(t) : 0.0;
        default:
            return t <= 3 ? Cubic(t) : 0.0;
    }
}

std::vector<List> ListsOf(int mode, int from, int to, bool across) {
    std::vector<List> lists(static_cast<std::size_t>(to));
    const double scale = static_cast<double>(to) / from;
    for (int i = 0; i < to; ++i) {
        List& list = lists[static_cast<std::size_t>(i)];
        const double centre = (i + 0.5) / scale;
        const bool enlarging = scale >= 1;
        int left, right;
        SearchEnds(centre, enlarging ? SupportOf(mode) : SupportOf(mode) / scale, enlarging && across, &left, &right);
        for (int j = std::max(left, 0); j <= std::min(right, from - 1); ++j) {
            const double x = enlarging ? centre - j - 0.5 : scale * (centre - j - 0.5);
            const double weight = WeightOf(mode, x);
            if (weight == 0) continue;
            list.entries.push_back({weight, j});
            list.total += weight;
        }
    }
    return lists;
}

void PassAcross(const Plane& source, const Format& self, int mode, Middle& middle) {
    const Plan plan = PlanOf(source.format, self);
    const std::vector<List> lists = ListsOf(mode, source.width, middle.width, true);
    for (int y = 0; y < source.height; ++y)
        for (int x = 0; x < middle.width; ++x) {
            const List& list = lists[static_cast<std::size_t>(x)];
            if (plan.zeroRest) middle.At(x, y) = {0, 0, 0, 0};
            for (const int slot : plan.slots) {
                double sum = 0;
                for (const Entry& entry : list.entries)
                    sum += entry.weight * SampleOf(source, plan, slot, entry.index, y);
                middle.At(x, y)[static_cast<std::size_t>(slot)] = static_cast<float>(Clamp(sum / list.total));
            }
        }
}

void PassDown(const Middle& middle, const Format& source, int mode, int height, Plane& self) {
    const Plan plan = PlanOf(source, self.format);
    const std::vector<List> lists = ListsOf(mode, middle.height, height, false);
    for (int y = 0; y < std::min(height, self.height); ++y)
        for (int x = 0; x < std::min(middle.width, self.width); ++x)
            for (const auto& [slot, offset] : plan.writes) {
                const List& list = lists[static_cast<std::size_t>(y)];
                double sum = 0;
                for (const Entry& entry : list.entries)
                    sum += entry.weight * middle.At(x, entry.index)[static_cast<std::size_t>(slot)];
                self.Pixel(x, y)[offset] = static_cast<std::uint8_t>(Clamp(sum / list.total));
            }
}

void Scale(const Plane& source, Plane& self, int mode, int width, int height) {
    Middle middle{width, source.height, {}};
    middle.pixels.resize(static_cast<std::size_t>(width) * static_cast<std::size_t>(source.height));
    PassAcross(source, self.format, mode, middle);
    PassDown(middle, source.format, mode, height, self);
}

}  // namespace scale_test
