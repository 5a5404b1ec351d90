// Declarations of methods, events and constants as text.
//
//   DrawMaskedPictureRGB(pic as picture, DestX as integer, InvertMask as boolean = False)
//   TransferFilter(dest as PictureTQX, gray() as integer) as PictureTQX
//   ImageFormatG = &h0000000B
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "host/objects/Signature.h"
#include "host/objects/Value.h"

namespace host {

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

}  // namespace host
