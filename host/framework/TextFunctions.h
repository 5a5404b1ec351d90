// The global functions on text.
#pragma once

namespace host {

class Runtime;

void RegisterTextFunctions(Runtime& runtime);        // parts, characters, numbers
void RegisterTextSearchFunctions(Runtime& runtime);  // InStr, Replace, Split and the like
void RegisterTextFormFunctions(Runtime& runtime);    // Titlecase, StrComp, CStr, EndOfLine

}  // namespace host
