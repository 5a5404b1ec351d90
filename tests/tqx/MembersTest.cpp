// That the command explains whatever the framework has. This program registers nothing beside it.
#include <gtest/gtest.h>

#include <sstream>

#include "host/calls/Runtime.h"
#include "host/reference/Descriptions.h"
#include "host/reference/Reference.h"

namespace {

TEST(Members, EveryFunctionAndClassOfTheFrameworkIsDescribed) {
    for (const std::string& name : host::Runtime::Get().FunctionNames())
        EXPECT_TRUE(host::DescriptionOf(name).ends_with('.')) << name;
    for (const host::Class* type : host::Runtime::Get().Classes())
        EXPECT_TRUE(host::DescriptionOf(type->name()).ends_with('.')) << type->name();
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
