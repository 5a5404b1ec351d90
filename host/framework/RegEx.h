// The classes RegEx, RegExOptions and RegExMatch.
#pragma once

#include "host/framework/RegExPattern.h"
#include "host/objects/Object.h"
#include "host/objects/String.h"

namespace host {

class Runtime;

void RegisterRegEx(Runtime& runtime);
void RegisterRegExOptions(Runtime& runtime);
void RegisterRegExMatch(Runtime& runtime);

Ref<Object> NewRegExOptions();

// What a RegExOptions says; the defaults for nil.
RegExSettings SettingsOf(sdk::Object* options);

// A match in a text, with the replacement that its Replace uses when none is given.
Ref<Object> NewRegExMatch(const Ref<String>& text, RegExSpans spans, const Ref<String>& replacement);

}  // namespace host
