// Why a class is refused: every row of the table is reached by a record.
#include <gmock/gmock.h>

#include <functional>
#include <set>

#include "host/calls/Runtime.h"
#include "host/messages/LoadMessages.h"

namespace {

using sdk::ClassDefinition;

void Nothing(sdk::Object*) {}

const auto kNothing = reinterpret_cast<sdk::AnyFunction>(&Nothing);

// What is said of a class named Refused, with one thing wrong.
std::string RefusalOf(ClassDefinition definition) {
    host::Runtime& runtime = host::Runtime::Get();
    EXPECT_EQ(runtime.RegisterClass(definition), nullptr);
    return runtime.LastRefusal();
}

ClassDefinition Sound() { return {.version = sdk::kInterfaceVersion, .name = "Refused", .instanceDataSize = 16}; }

std::string RefusalOfHead(const std::function<void(ClassDefinition&)>& spoil) {
    ClassDefinition definition = Sound();
    spoil(definition);
    return RefusalOf(definition);
}

std::string RefusalOfMethods(const std::vector<sdk::MethodRecord>& records) {
    ClassDefinition definition = Sound();
    definition.methods = records.data();
    definition.methodCount = static_cast<std::int32_t>(records.size());
    return RefusalOf(definition);
}

std::string RefusalOfProperties(const std::vector<sdk::PropertyRecord>& records) {
    ClassDefinition definition = Sound();
    definition.properties = records.data();
    definition.propertyCount = static_cast<std::int32_t>(records.size());
    return RefusalOf(definition);
}

std::string ManyParameters() {
    std::string parameters;
    for (int i = 0; i < 40; ++i) parameters += (i ? ", p" : "p") + std::to_string(i) + " as Integer";
    return "Many(" + parameters + ")";
}

struct Case {
    host::Message row;
    std::string refusal;
};

std::vector<Case> AllRefusals() {
    const auto& says = host::kClassSays;
    const std::string many = ManyParameters();
    return {
        {says.unknownSuperclass, RefusalOfHead([](ClassDefinition& d) { d.superclass = "Nobody"; })},
        {says.nameTaken, RefusalOfHead([](ClassDefinition& d) { d.name = "RuntimeException"; })},
        {says.version, RefusalOfHead([](ClassDefinition& d) { d.version = 1; })},
        {says.noName, RefusalOfHead([](ClassDefinition& d) { d.name = nullptr; })},
        {says.noName, RefusalOfHead([](ClassDefinition& d) { d.name = "two words"; })},
        {says.instanceSize, RefusalOfHead([](ClassDefinition& d) { d.instanceDataSize = -1; })},
        {says.instanceSize, RefusalOfHead([](ClassDefinition& d) { d.instanceDataSize = INT32_MAX; })},
        {says.statesCount, RefusalOfHead([](ClassDefinition& d) { d.methodCount = -1; })},
        {says.statesCount, RefusalOfHead([](ClassDefinition& d) { d.eventCount = INT32_MAX; })},
        {says.noTable, RefusalOfHead([](ClassDefinition& d) { d.constantCount = 1; })},
        {says.noDeclaration, RefusalOfMethods({{kNothing, nullptr, nullptr, 0}})},
        {says.unreadable, RefusalOfMethods({{kNothing, nullptr, "Broken(x as)", 0}})},
        {says.comesTwice, RefusalOfMethods({{kNothing, nullptr, "Twice()", 0}, {kNothing, nullptr, "Twice()", 0}})},
        {says.byRef, RefusalOfMethods({{kNothing, nullptr, "ByPlace(ByRef x as Integer)", 0}})},
        {says.tooManyArguments, RefusalOfMethods({{kNothing, nullptr, many.c_str(), 0}})},
        {says.noFunction, RefusalOfMethods({{nullptr, nullptr, "Hollow()", 0}})},
        {says.nothingToAssign, RefusalOfMethods({{kNothing, kNothing, "Assigned(i as Integer)", 0}})},
        {says.fieldOutside, RefusalOfProperties({{"Far", "Integer", 0, sdk::FieldAt(4000), sdk::kNoAccess}})},
        {says.noProperName, RefusalOfProperties({{nullptr, "Integer", 0, sdk::FieldAt(0), sdk::kNoAccess}})},
        {says.neitherReadNorWritten, RefusalOfProperties({{"Closed", "Integer", 0, sdk::kNoAccess, sdk::kNoAccess}})},
    };
}

TEST(ClassDefinition, IsRefusedForEveryReasonOfTheTable) {
    std::set<std::string_view> missing;
    for (const host::Message& row : host::RowsOf(host::kClassSays)) missing.insert(row.text);
    for (const Case& one : AllRefusals()) {
        EXPECT_TRUE(host::Matches(host::kClassSays.refused.Text("…", "…" + std::string(one.row.text)), one.refusal))
            << one.row.text << " is not " << one.refusal;
        missing.erase(one.row.text);
    }
    EXPECT_THAT(missing, testing::UnorderedElementsAre(host::kClassSays.refused.text));
    EXPECT_EQ(host::Runtime::Get().FindClass("Refused"), nullptr);
}

}  // namespace
