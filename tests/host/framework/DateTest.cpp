// Where the system's clock is read as local time.
#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>

#include "host/framework/CivilTime.h"

namespace host {

namespace {

class LocalTime : public testing::Test {
  protected:
    ~LocalTime() override { SetZone(""); }

    static void SetZone(const char* zone) {
        zone[0] ? setenv("TZ", zone, 1) : unsetenv("TZ");
        tzset();
    }
};

TEST_F(LocalTime, IsAheadOfGreenwichByItsZone) {
    SetZone("HERE-3:30");
    EXPECT_EQ(LocalOffset({2026, 1, 1}), 3.5);
    SetZone("UTC0");
    const std::int64_t before = SecondsOf(LocalNow());
    SetZone("HERE+5");
    const std::int64_t after = SecondsOf(LocalNow());
    EXPECT_NEAR(static_cast<double>(before - after), 5 * 3600, 60);
}

TEST_F(LocalTime, KnowsSummerTimeByTheDate) {
    SetZone("WINTER0SUMMER,M3.5.0,M10.5.0");
    EXPECT_EQ(LocalOffset({2026, 1, 1}), 0);
    EXPECT_EQ(LocalOffset({2026, 7, 1}), 1);
}

}  // namespace

}  // namespace host
