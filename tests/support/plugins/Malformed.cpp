// A plug-in whose class has several faults.
#include "tests/support/plugins/Host.h"

namespace {

void Nothing(sdk::Object*) {}

const sdk::MethodRecord methods[] = {
    {reinterpret_cast<sdk::AnyFunction>(&Nothing), nullptr, "Broken(x as)", 4},
    {nullptr, nullptr, "Functionless", 4},
};

const sdk::PropertyRecord properties[] = {
    {"Far", "Integer", 6, sdk::FieldAt(4000), sdk::kNoAccess},
    {"Straddling", "Int64", 6, sdk::FieldAt(12), sdk::kNoAccess},
    {"Closed", "Integer", 6, sdk::kNoAccess, sdk::kNoAccess},
};

const sdk::ConstantRecord constants[] = {{"Nameless = ", nullptr, 0}};

sdk::ClassDefinition definition{.version = sdk::kInterfaceVersion,
                                .name = "Malformed",
                                .instanceDataSize = 16,
                                .properties = properties,
                                .propertyCount = 3,
                                .methods = methods,
                                .methodCount = 2,
                                .eventCount = 2,
                                .constants = constants,
                                .constantCount = 1};

}  // namespace

TEST_PLUGIN_ENTRY(sdk::EntryFunction entry) {
    KeepResolver(entry);
    return CallHost(sdk::kPluginRegisterClass, &definition);
}
