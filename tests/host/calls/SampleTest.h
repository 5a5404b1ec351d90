// Tests against the small sound plug-in instead of the one under test.
#pragma once

#include "host/calls/PluginLoader.h"
#include "tests/support/Places.h"
#include "tests/support/PluginFixture.h"

inline std::string TestPluginPath(const std::string& name) { return support::TestPluginFolder() + "/" + name + ".so"; }

class SampleTest : public support::PluginTest {
  protected:
    std::string PluginPath() const override { return TestPluginPath("Sample"); }
};
