// Text that is taken for a format a second time, without arguments.
#include "base/percent.h"

#include <string>

#include "support/device_test.h"

namespace {

class PercentTest : public fairlead_test::DeviceTest {};

std::string halved(std::string text) {
  fairlead::halve_percent(text.data());
  return text.c_str();
}

TEST_F(PercentTest, two_percent_signs_become_one) {
  EXPECT_EQ("100%", halved("100%%"));
  EXPECT_EQ("%a%", halved("%%a%%"));
  EXPECT_EQ("%%", halved("%%%%"));
}

TEST_F(PercentTest, everything_else_stays) {
  for (const char* text : {"", "plain", "%", "%s", "%n and %d", "a%"})
    EXPECT_EQ(text, halved(text));
  EXPECT_EQ("%%s", halved("%%%s"));
}

}  // namespace
