// The page that describes the members, against the records that declare them.
#include <algorithm>
#include <fstream>
#include <string>
#include <vector>

#include "tests/support/Places.h"
#include "tests/support/PluginFixture.h"

namespace {

class MembersPage : public support::PluginTest {
  protected:
    void SetUp() override {
        PluginTest::SetUp();
        std::ifstream page(support::SourceFolder() + "/docs/members.md");
        bool inBlock = false;
        for (std::string line; std::getline(page, line);) {
            if (line == "```")
                inBlock = !inBlock;
            else if (inBlock)
                declarations_.push_back(line);
            text_ += line + "\n";
        }
        ASSERT_FALSE(text_.empty());
        EXPECT_FALSE(inBlock);
    }

    static const sdk::ClassDefinition& Definition(const char* name) {
        return *host::Runtime::Get().ClassNamed(name).definition();
    }

    static std::vector<std::string> RegisteredDeclarations() {
        std::vector<std::string> all;
        for (const char* const name : {"PictureTQX", "PictureFactoryTQX"}) {
            const sdk::ClassDefinition& definition = Definition(name);
            for (int i = 0; i < definition.methodCount; ++i) {
                const sdk::MethodRecord& method = definition.methods[i];
                all.push_back(std::string(method.declaration) + (method.setter ? "   ' also assignable" : ""));
            }
            for (int i = 0; i < definition.sharedMethodCount; ++i)
                all.push_back(std::string(name) + "." + definition.sharedMethods[i].declaration);
            for (int i = 0; i < definition.eventCount; ++i)
                all.push_back(std::string("Event ") + definition.events[i].declaration);
        }
        return all;
    }

    bool Has(const std::string& piece) const { return text_.find(piece) != std::string::npos; }

    std::string text_;
    std::vector<std::string> declarations_;  // the lines of its code blocks
};

TEST_F(MembersPage, HasEveryMethodAndEventOnceAndNoOther) {
    std::vector<std::string> registered = RegisteredDeclarations(), described = declarations_;
    std::sort(registered.begin(), registered.end());
    std::sort(described.begin(), described.end());
    std::vector<std::string> missing, unknown;
    std::set_difference(registered.begin(), registered.end(), described.begin(), described.end(),
                        std::back_inserter(missing));
    std::set_difference(described.begin(), described.end(), registered.begin(), registered.end(),
                        std::back_inserter(unknown));
    EXPECT_EQ(missing, std::vector<std::string>{});
    EXPECT_EQ(unknown, std::vector<std::string>{});
}

TEST_F(MembersPage, HasEveryPropertyWithItsTypeAndAccess) {
    const sdk::ClassDefinition& definition = Definition("PictureTQX");
    for (int i = 0; i < definition.propertyCount; ++i) {
        const sdk::PropertyRecord& property = definition.properties[i];
        const bool writable = property.setter.function || property.setter.fieldOffset >= 0;
        const std::string row = std::string("\n| `") + property.name + "` | " + property.type + " | " +
                                (writable ? "read, write" : "read") + " | ";
        EXPECT_TRUE(Has(row)) << row;
    }
}

TEST_F(MembersPage, HasEveryConstantWithItsValue) {
    for (const host::Constant& constant : host::Runtime::Get().ClassNamed("PictureTQX").constants()) {
        const std::string cells = "| `" + constant.name + "` | " + std::to_string(constant.value.ToInt64()) + " |";
        EXPECT_TRUE(Has(cells)) << cells;
    }
}

}  // namespace
