// Results as people and programs read them.
#include <gmock/gmock.h>

#include "host/check/Report.h"

namespace host {
namespace {

using ::testing::HasSubstr;

const CheckResult kCrashed{"calls", "Nothing crashes.",   CheckStatus::Crash,     3,
                           0.5,     "Segmentation fault", "Dim p As New A\np.B\n"};
const CheckResult kPassed{"calls", "Nothing crashes.", CheckStatus::Pass, 3, 0.25, "3 calls", ""};

std::vector<CheckResult> OneOfEach() {
    std::vector<CheckResult> results;
    for (std::size_t i = 0; i < kCheckStatusCount; ++i) {
        results.push_back(kPassed);
        results.back().status = static_cast<CheckStatus>(i);
        results.back().id += "-" + std::string(StatusName(results.back().status));
    }
    return results;
}

TEST(CheckLine, SetsTheScriptBelow) {
    EXPECT_EQ(CheckLine(kCrashed),
              "crash    calls             Segmentation fault\n            Dim p As New A\n            p.B\n");
    EXPECT_EQ(CheckLine(kPassed), "pass     calls             3 calls\n");
}

TEST(CheckSummary, CountsEveryStatus) {
    EXPECT_EQ(CheckSummary(OneOfEach()), "6 checks: 1 pass, 1 skip, 1 warn, 1 timeout, 1 fail, 1 crash\n");
    EXPECT_EQ(CheckSummary({&kPassed, 1}), "1 check: 1 pass, 0 skip, 0 warn, 0 timeout, 0 fail, 0 crash\n");
}

TEST(ChecksAsJson, HasEveryField) {
    EXPECT_EQ(ChecksAsJson("/p.so", 7, {&kCrashed, 1}), R"({
  "plugin": "/p.so",
  "seed": 7,
  "checks": [
    {
      "id": "calls",
      "sentence": "Nothing crashes.",
      "status": "crash",
      "cases": 3,
      "seconds": 0.5,
      "detail": "Segmentation fault",
      "script": "Dim p As New A\np.B\n"
    }
  ],
  "counts": {
    "pass": 0,
    "skip": 0,
    "warn": 0,
    "timeout": 0,
    "fail": 0,
    "crash": 1
  }
}
)");
}

TEST(ChecksAsJson, MakesAnyBytesSound) {
    CheckResult result = kPassed;
    result.detail = "a\"b\\c\nd\x01";
    const std::string json = ChecksAsJson("/\xFF.so", 1, {&result, 1});
    EXPECT_THAT(json, HasSubstr("\"plugin\": \"/\uFFFD.so\""));
    EXPECT_THAT(json, HasSubstr("\"detail\": \"a\\\"b\\\\c\\nd\\u0001\""));
    EXPECT_THAT(json, HasSubstr("\"script\": null"));
}

TEST(ChecksAsJUnit, HasAnElementForEveryStatus) {
    const std::string xml = ChecksAsJUnit("/p.so", 7, OneOfEach());
    EXPECT_THAT(xml, HasSubstr("<testsuites tests=\"6\" failures=\"1\" errors=\"2\" skipped=\"1\" time=\"1.500\">"));
    EXPECT_THAT(xml, HasSubstr("<testcase classname=\"tqx.check\" name=\"calls-fail\" time=\"0.250\">"
                               "<failure message=\"3 calls\" type=\"fail\"></failure></testcase>"));
    for (const char* status : {"crash", "timeout"})
        EXPECT_THAT(xml, HasSubstr("<error message=\"3 calls\" type=\"" + std::string(status) + "\">"));
    EXPECT_THAT(xml, HasSubstr("<skipped message=\"3 calls\"/>"));
    EXPECT_THAT(xml, HasSubstr("<property name=\"seed\" value=\"7\"/>"));
}

TEST(ChecksAsJUnit, MakesAnyBytesSound) {
    CheckResult result = kCrashed;
    result.detail = "a<b>&\"\x01\xFF\n";
    EXPECT_THAT(ChecksAsJUnit("/p.so", 1, {&result, 1}), HasSubstr("message=\"a&lt;b&gt;&amp;&quot;?\uFFFD&#10;\""));
}

}  // namespace
}  // namespace host
