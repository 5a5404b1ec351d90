// Edit distances, and the nearest of some names.
#include "host/objects/NearestName.h"

#include <algorithm>
#include <vector>

#include "host/objects/Type.h"

namespace host {

namespace {

constexpr std::size_t kLongestName = 64;  // nobody mistypes a longer one

}  // namespace

std::size_t EditDistance(std::string_view a, std::string_view b) {
    // Of the row of b's beginnings, for the last three beginnings of a.
    std::vector<std::size_t> before(b.size() + 1), above(b.size() + 1), row(b.size() + 1);
    for (std::size_t j = 0; j <= b.size(); ++j) row[j] = j;
    for (std::size_t i = 1; i <= a.size(); ++i) {
        before.swap(above);
        above.swap(row);
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            row[j] = std::min({above[j] + 1, row[j - 1] + 1, above[j - 1] + (a[i - 1] != b[j - 1])});
            const bool swapped = i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1];
            if (swapped) row[j] = std::min(row[j], before[j - 2] + 1);
        }
    }
    return row[b.size()];
}

std::string NearestName(std::string_view name, std::span<const std::string> candidates) {
    if (name.size() > kLongestName) return {};
    const std::string lower = LowerName(name);
    std::string nearest;
    std::size_t best = name.size() / 3 + 1;  // one slip in three letters is a mistype
    for (const std::string& candidate : candidates) {
        if (candidate.size() > kLongestName) continue;
        const std::size_t distance = EditDistance(lower, LowerName(candidate));
        if (distance >= best) continue;
        best = distance;
        nearest = candidate;
    }
    return nearest;
}

std::string DidYouMean(std::string_view name, std::span<const std::string> candidates) {
    const std::string nearest = NearestName(name, candidates);
    return nearest.empty() ? std::string() : "; did you mean " + nearest + "?";
}

}  // namespace host
