// One parameter as declarations and scripts write it:
//
//   [ByRef | ByVal | Optional | ParamArray | Assigns | Extends] name[()] As Type [= default]
//
// How tokens are taken, what a type is and what is told of a mistake differs: the Grammar knows.
#pragma once

#include <algorithm>
#include <iterator>
#include <string_view>
#include <utility>

#include "host/objects/Signature.h"

namespace host {

struct ParameterWord {
    std::string_view word;
    bool ParameterFlags::*flag;  // null: it says nothing new
};

inline constexpr ParameterWord kParameterWords[] = {
    {"byref", &ParameterFlags::byRef},       {"byval", nullptr},
    {"optional", &ParameterFlags::optional}, {"paramarray", &ParameterFlags::paramArray},
    {"assigns", &ParameterFlags::assigns},   {"extends", &ParameterFlags::extends},
};

// Such a word may be the parameter's name as well: it says something where a name follows.
template <class Grammar>
void ReadParameterWords(Grammar& grammar, ParameterFlags& flags) {
    for (;;) {
        const auto* found = std::find_if(std::begin(kParameterWords), std::end(kParameterWords),
                                         [&](const ParameterWord& row) { return grammar.AtParameterWord(row.word); });
        if (found == std::end(kParameterWords)) return;
        if (found->flag) flags.*found->flag = true;
        grammar.Step();
    }
}

// Grammar has: AtParameterWord(word), whether that word and then a name stand here; Step(); Skip(word or
// sign), whether it stood here; ReadName(parameter), ReadAs(), ReadParameterType(parameter, array) and
// ReadDefault(parameter), which fail in their own way.
template <class Grammar, class Parameter>
void ReadParameter(Grammar& grammar, Parameter& parameter) {
    ReadParameterWords(grammar, parameter);
    grammar.ReadName(parameter);
    const bool array = grammar.Skip("(");
    if (array) grammar.ReadClosing();
    grammar.ReadAs();
    grammar.ReadParameterType(parameter, array);
    if (!grammar.Skip("=")) return;
    parameter.optional = true;
    grammar.ReadDefault(parameter);
}

}  // namespace host
