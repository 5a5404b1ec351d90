// A reference of classes, written from their records alone.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "host/objects/Class.h"

namespace host {

struct ReferenceRequest {
    std::string what;  // "" for all classes, "Class", "Class.Member" or "Member"; in any case
    bool json = false;
    int columns = 80;  // of the readable form, at least 60
};

// Writes the reference of what is asked for: constructors, methods (overloads together),
// properties, events and constants, in alphabetical order; constants in groups by the first words
// of their names. False when there is no such class or member; then `text` says so and offers
// near names. Ends with a line end in either case.
bool DescribeClasses(std::span<const Class* const> classes, const ReferenceRequest& request, std::string& text);

// The same for a function of the host or the language, with what it does. False, with `text` as it
// was, when there is none of that name.
bool DescribeFunction(std::string_view name, const ReferenceRequest& request, std::string& text);

// The names of the classes given, and of all functions, in tables.
std::string ListNames(std::span<const Class* const> classes, int columns = 80);

// The names that are nearest to one that does not exist, at most three, the nearest first.
std::vector<std::string> NearNames(std::string_view name, const std::vector<std::string>& names);

}  // namespace host
