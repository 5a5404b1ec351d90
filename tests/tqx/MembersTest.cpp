// That the command explains whatever the framework has. This program registers nothing beside it.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <sstream>

#include "host/calls/Runtime.h"
#include "host/reference/Descriptions.h"
#include "host/reference/Reference.h"

namespace {

void ExpectDescribed(const std::string& name) {
    const host::Description* const description = host::FindDescription(name);
    ASSERT_TRUE(description) << name << " has no entry in host/reference/framework";
    EXPECT_TRUE(description->sentence.ends_with('.')) << name;
    EXPECT_FALSE(description->example.empty()) << name;
}

std::set<std::string> NamesOfTheFramework() {
    std::set<std::string> names = {"Print", "Quit", "Array", "Ubound"};
    for (const std::string& name : host::Runtime::Get().FunctionNames()) names.insert(name);
    for (const host::Class* type : host::Runtime::Get().Classes()) {
        names.insert(type->name());
        const auto add = [&](const std::string& member) { names.insert(type->name() + '.' + member); };
        for (const auto* methods : {&type->methods(), &type->sharedMethods()})
            for (const host::Method& method : *methods) add(method.declaration.name);
        for (const host::Property& property : type->properties()) add(property.name);
        for (const host::Event& event : type->events()) add(event.declaration.name);
        for (const host::Constant& constant : type->constants()) add(constant.name);
    }
    return names;
}

TEST(Members, EveryFunctionClassAndMemberOfTheFrameworkHasASentenceAndAnExample) {
    const std::set<std::string> names = NamesOfTheFramework();
    EXPECT_GT(names.size(), 400u);
    for (const std::string& name : names) ExpectDescribed(name);
}

TEST(Members, NothingIsDescribedThatIsNotThere) {
    const std::set<std::string> names = NamesOfTheFramework();
    for (const std::string_view described : host::DescribedNames())
        EXPECT_TRUE(names.contains(std::string(described))) << described;
}

TEST(Members, PagesOfFunctionsStayWithin80Columns) {
    for (const std::string& name : host::Runtime::Get().FunctionNames()) {
        std::string text;
        ASSERT_TRUE(host::DescribeFunction(name, {name}, text)) << name;
        std::istringstream page(text);
        for (std::string line; std::getline(page, line);) EXPECT_LE(line.size(), 80u) << line;
    }
}

}  // namespace
