// The class RegExOptions: how a RegEx searches.
#include "host/framework/RegEx.h"
#include "host/framework/Support.h"

namespace host {

namespace {

sdk::ClassDefinition definition{.name = "RegExOptions", .instanceDataSize = sizeof(RegExSettings)};

RegExSettings& Data(sdk::Object* options) { return DataOf<RegExSettings>(options, definition); }

void Make(sdk::Object* options) { Data(options) = RegExSettings(); }

template <bool RegExSettings::*Setting>
bool Get(sdk::Object* options) {
    return Data(options).*Setting;
}

template <bool RegExSettings::*Setting>
void Set(sdk::Object* options, bool value) {
    Data(options).*Setting = value;
}

template <sdk::Text Name, bool RegExSettings::*Setting>
sdk::PropertyRecord Switch() {
    return ReadWrite<"Boolean", &Get<Setting>, &Set<Setting>>(kTypeName<Name>.characters);
}

std::int32_t LineEndType(sdk::Object* options) { return Data(options).lineEndType; }

void SetLineEndType(sdk::Object* options, std::int32_t type) {
    if (type < 0 || type > kLastLineEndType) Fail(kPatternsRaise.lineEnds(type));
    Data(options).lineEndType = type;
}

}  // namespace

Ref<Object> NewRegExOptions() { return NewInstanceOf(definition); }

RegExSettings SettingsOf(sdk::Object* options) { return options ? Data(options) : RegExSettings(); }

void RegisterRegExOptions(Runtime& runtime) {
    static const sdk::PropertyRecord properties[] = {
        Switch<"CaseSensitive", &RegExSettings::caseSensitive>(),
        Switch<"DotMatchAll", &RegExSettings::dotMatchAll>(),
        Switch<"Greedy", &RegExSettings::greedy>(),
        Switch<"TreatTargetAsOneLine", &RegExSettings::treatTargetAsOneLine>(),
        Switch<"MatchEmpty", &RegExSettings::matchEmpty>(),
        Switch<"StringBeginIsLineBegin", &RegExSettings::stringBeginIsLineBegin>(),
        Switch<"StringEndIsLineEnd", &RegExSettings::stringEndIsLineEnd>(),
        Switch<"ReplaceAllMatches", &RegExSettings::replaceAllMatches>(),
        ReadWrite<"Integer", &LineEndType, &SetLineEndType>("LineEndType"),
    };
    definition.constructor = &Make;
    SetProperties(definition, properties);
    RegisterOrAbort(runtime, definition);
}

}  // namespace host
