// The name that someone who mistyped one had in mind.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace host {

// Letters to change, add, drop or swap with their neighbour to make one text of the other (optimal
// string alignment: L. Boytsov, "Indexing methods for approximate dictionary searching", 2011).
std::size_t EditDistance(std::string_view a, std::string_view b);

// The nearest of some names to a mistyped one, in any case; empty when none is within one slip in
// three letters. The first of several that are equally near.
std::string NearestName(std::string_view name, std::span<const std::string> candidates);

// "; did you mean Width?", or nothing.
std::string DidYouMean(std::string_view name, std::span<const std::string> candidates);

}  // namespace host
