// Declarations of methods, events and constants, as text and as records.
//
//   DrawMaskedPictureRGB(pic as picture, DestX as integer, InvertMask as boolean = False)
//   TransferFilter(dest as PictureTQX, gray() as integer) as PictureTQX
//   ImageFormatG = &h0000000B
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "host/objects/Type.h"
#include "host/objects/Value.h"

namespace host {

// As many as a function of the plug-in interface may take.
inline constexpr std::size_t kMostParameters = 32;

struct Parameter {
    std::string name;
    Type type;
    bool byRef = false;
    bool optional = false;    // may be left out; then it is defaultValue
    bool paramArray = false;  // takes all further arguments as one array
    Value defaultValue;       // already of the parameter's type
};

struct Declaration {
    std::string name;
    std::vector<Parameter> parameters;
    Type result;  // kind None for a method that gives nothing

    std::size_t RequiredCount() const;  // arguments that can't be left out
};

struct ConstantDeclaration {
    std::string name;
    Value value;  // Integer (hexadecimal ones by their 32 bits), Int64, Double, Boolean, String or Color
};

// Reads the declaration of a method or event. On failure gives false and a message that quotes
// the text and says what was expected.
bool ReadDeclaration(std::string_view text, Declaration& declaration, std::string& problem);

// Reads "Name = literal".
bool ReadConstant(std::string_view text, ConstantDeclaration& constant, std::string& problem);

// "Name(a As Integer, b() As Double = …) As Boolean", in one style whatever the original's.
std::string DeclarationText(const Declaration& declaration);
std::string ParameterText(const Parameter& parameter);

// Whether the two have the same name, parameter types and result; names of parameters, defaults,
// letter case and blanks do not count.
bool SameSignature(const Declaration& a, const Declaration& b);
bool SameParameters(const Declaration& a, const Declaration& b);

}  // namespace host
