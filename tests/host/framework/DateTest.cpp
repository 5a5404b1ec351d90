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
    EXPECT_EQ(SqlDateTime(LocalTimeOf(0)), "1970-01-01 00:00:00");
    SetZone("HERE+5");
    EXPECT_EQ(SqlDateTime(LocalTimeOf(0)), "1969-12-31 19:00:00");
}

TEST_F(LocalTime, KnowsSummerTimeByTheDate) {
    SetZone("WINTER0SUMMER,M3.5.0,M10.5.0");
    EXPECT_EQ(LocalOffset({2026, 1, 1}), 0);
    EXPECT_EQ(LocalOffset({2026, 7, 1}), 1);
}

}  // namespace

}  // namespace host
