// Random programs in the script language, made from a plug-in's records: well-formed, and wild in
// everything that a program may be wild in.
//
// A program has a few variables for each class. Its statements construct, call, assign, read and drop
// at random, each by itself in a Try, so that any of them can be taken away. Events are handled and
// timers fire with statements of the same kind, in the middle of other calls where those yield.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "host/check/Expression.h"

namespace host::check {

struct RandomProgram {
    std::string head;                     // classes and variables
    std::vector<std::string> statements;  // whole lines each
    std::string tail;                     // hands nil to shared methods, that nothing is kept by them

    std::string Text() const;
};

// The program of a number: the same for the same supply and numbers.
RandomProgram MakeProgram(const Supply& supply, std::uint64_t seed, std::uint64_t number, int statementCount);

// The shortest program that can be had from one by taking statements away for which `fails` still
// holds.
RandomProgram Shrunk(RandomProgram program, const std::function<bool(const RandomProgram&)>& fails);

}  // namespace host::check
