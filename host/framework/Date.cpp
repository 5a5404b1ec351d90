// A date's fields, set one at a time, and the texts that it gives and reads.
#include "host/framework/Date.h"

#include <cmath>
#include <ctime>

#include "host/framework/CivilTime.h"
#include "host/framework/Support.h"

namespace host {

namespace {

struct DateData {
    double seconds;  // since January 1, 1904, in the date's own local time; of years 1 to 9999
    double offset;   // hours ahead of Greenwich
};

constexpr std::int64_t kFirstYear = 1, kLastYear = 9999;
constexpr double kMostHours = 24;

sdk::ClassDefinition definition{.name = "Date", .instanceDataSize = sizeof(DateData)};

DateData& Data(sdk::Object* date) { return DataOf<DateData>(date, definition); }

CivilTime FieldsOf(sdk::Object* date) { return CivilTimeOf(static_cast<std::int64_t>(std::floor(Data(date).seconds))); }

void SetSeconds(sdk::Object* date, double seconds) {
    static const auto first = static_cast<double>(SecondsOf({kFirstYear}));
    static const auto end = static_cast<double>(SecondsOf({kLastYear + 1}));
    if (!(seconds >= first && seconds < end)) Fail(kContainersRaise.years());
    Data(date).seconds = seconds;
}

// The fraction of a second stays.
void SetFields(sdk::Object* date, const CivilTime& time) {
    const double before = Data(date).seconds;
    SetSeconds(date, static_cast<double>(SecondsOf(time)) + before - std::floor(before));
}

void SetLocal(sdk::Object* date, const CivilTime& time) {
    SetSeconds(date, static_cast<double>(SecondsOf(time)));
    Data(date).offset = LocalOffset(FieldsOf(date));
}

// --- Making ---------------------------------------------------------------------------------

void Make(sdk::Object* date) {
    AtBorder([date] { SetLocal(date, LocalTimeOf(std::time(nullptr))); });
}

void Construct(sdk::Object*) {}

void ConstructCopy(sdk::Object* date, sdk::Object* other) {
    if (!other) Fail(kContainersRaise.noDateToCopy());
    Data(date) = Data(other);
}

void ConstructFields(sdk::Object* date, std::int32_t year, std::int32_t month, std::int32_t day, std::int32_t hour,
                     std::int32_t minute, std::int32_t second) {
    SetLocal(date, {year, month, day, hour, minute, second});
}

double GmtOffset(sdk::Object* date) { return Data(date).offset; }

// The moment stays, its local time moves.
void SetGmtOffset(sdk::Object* date, double hours) {
    if (!(std::fabs(hours) <= kMostHours)) Fail(kContainersRaise.hours());
    SetSeconds(date, Data(date).seconds + (hours - Data(date).offset) * 3600);
    Data(date).offset = hours;
}

void ConstructWithOffset(sdk::Object* date, std::int32_t year, std::int32_t month, std::int32_t day, std::int32_t hour,
                         std::int32_t minute, std::int32_t second, double hours) {
    SetGmtOffset(date, hours);
    SetSeconds(date, static_cast<double>(SecondsOf({year, month, day, hour, minute, second})));
}

// --- Fields ---------------------------------------------------------------------------------

template <std::int64_t CivilTime::*Field>
std::int32_t Get(sdk::Object* date) {
    return static_cast<std::int32_t>(FieldsOf(date).*Field);
}

// What is out of the field's range moves the others.
template <std::int64_t CivilTime::*Field>
void Set(sdk::Object* date, std::int32_t value) {
    CivilTime time = FieldsOf(date);
    time.*Field = value;
    SetFields(date, time);
}

template <sdk::Text Name, std::int64_t CivilTime::*Field>
sdk::PropertyRecord FieldProperty() {
    return ReadWrite<"Integer", &Get<Field>, &Set<Field>>(kTypeName<Name>.characters);
}

template <std::int32_t (*Of)(const CivilTime&)>
std::int32_t Place(sdk::Object* date) {
    return Of(FieldsOf(date));
}

double TotalSeconds(sdk::Object* date) { return Data(date).seconds; }

// --- Text -----------------------------------------------------------------------------------

template <std::string (*Of)(const CivilTime&)>
sdk::String* Text(sdk::Object* date) {
    return GiveString(Of(FieldsOf(date)));
}

Value TextValue(sdk::String* text) { return Value(Ref<String>::Share(FromPlugin(text))); }

template <bool WithTime>
void SetSql(sdk::Object* date, sdk::String* text) {
    const std::optional<CivilTime> time = ReadSqlDate(Bytes(text), WithTime);
    if (!time) Fail(kContainersRaise.noDate(Describe(TextValue(text)), WithTime ? " 13:05:09." : "."));
    SetSeconds(date, static_cast<double>(SecondsOf(*time)));
}

// Fills a date that is there.
bool ParseDate(sdk::String* text, sdk::Object* date) {
    if (!date) Fail(kContainersRaise.noDateToFill());
    const std::optional<CivilTime> time = ReadDate(Bytes(text));
    if (time) SetLocal(date, *time);
    return time.has_value();
}

// By the moment, wherever it is seen; Nil comes before all.
std::int32_t Compare(sdk::Object* date, sdk::Object* other) {
    if (!other) return 1;
    const auto moment = [](const DateData& data) { return data.seconds - data.offset * 3600; };
    const double a = moment(Data(date)), b = moment(Data(other));
    return a < b ? -1 : a > b;
}

}  // namespace

Ref<Object> NewDate(std::int64_t moment) {
    Ref<Object> date = NewInstanceOf(definition);
    SetLocal(date.get(), LocalTimeOf(moment));
    return date;
}

void RegisterDate(Runtime& runtime) {
    constexpr std::int32_t kFlags = sdk::kMemberPortable;
    static const sdk::MethodRecord methods[] = {
        sdk::Method<"Constructor()", &Construct>(kFlags),
        sdk::Method<"Constructor(other as Date)", Guarded<&ConstructCopy>>(kFlags),
        sdk::Method<"Constructor(year as integer, month as integer = 1, day as integer = 1, hour as integer = 0, "
                    "minute as integer = 0, second as integer = 0)",
                    Guarded<&ConstructFields>>(kFlags),
        sdk::Method<"Constructor(year as integer, month as integer, day as integer, hour as integer, "
                    "minute as integer, second as integer, gmtOffset as double)",
                    Guarded<&ConstructWithOffset>>(kFlags),
        sdk::Method<"Operator_Compare(other as Date) as integer", Guarded<&Compare>>(kFlags),
    };
    static const sdk::PropertyRecord properties[] = {
        FieldProperty<"Year", &CivilTime::year>(),
        FieldProperty<"Month", &CivilTime::month>(),
        FieldProperty<"Day", &CivilTime::day>(),
        FieldProperty<"Hour", &CivilTime::hour>(),
        FieldProperty<"Minute", &CivilTime::minute>(),
        FieldProperty<"Second", &CivilTime::second>(),
        ReadOnly<"Integer", &Place<&DayOfWeek>>("DayOfWeek"),
        ReadOnly<"Integer", &Place<&DayOfYear>>("DayOfYear"),
        ReadOnly<"Integer", &Place<&WeekOfYear>>("WeekOfYear"),
        ReadWrite<"Double", &TotalSeconds, &SetSeconds>("TotalSeconds"),
        ReadWrite<"Double", &GmtOffset, &SetGmtOffset>("GMTOffset"),
        ReadWrite<"String", &Text<&SqlDate>, &SetSql<false>>("SQLDate"),
        ReadWrite<"String", &Text<&SqlDateTime>, &SetSql<true>>("SQLDateTime"),
        ReadOnly<"String", &Text<&ShortDate>>("ShortDate"),
        ReadOnly<"String", &Text<&AbbreviatedDate>>("AbbreviatedDate"),
        ReadOnly<"String", &Text<&LongDate>>("LongDate"),
        ReadOnly<"String", &Text<&ShortTime>>("ShortTime"),
        ReadOnly<"String", &Text<&LongTime>>("LongTime"),
    };
    static const sdk::MethodRecord functions[] = {
        sdk::SharedMethod<"ParseDate(text as string, value as Date) as boolean", Guarded<&ParseDate>>(kFlags),
    };
    definition.constructor = &Make;
    SetMethods(definition, methods);
    SetProperties(definition, properties);
    RegisterOrAbort(runtime, definition);
    runtime.RegisterFunctions(functions);
}

}  // namespace host
