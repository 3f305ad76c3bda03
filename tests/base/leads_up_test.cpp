// Names that lead out of their folder.
#include "base/leads_up.h"

#include "support/device_test.h"

namespace {

using fairlead::leads_up;

using LeadsUpTest = fairlead_test::DeviceTest;

TEST_F(LeadsUpTest, a_segment_of_two_dots_leads_up_wherever_it_stands) {
  for (const char* name : {"..", "../a", "a/..", "a/../b", "/..", "a//..//", "..//"})
    EXPECT_TRUE(leads_up(name)) << name;
}

TEST_F(LeadsUpTest, other_dots_do_not) {
  for (const char* name : {"", "/", ".", "./a", "...", "..a", "a..", "a../b", ".../b", "a/.b."})
    EXPECT_FALSE(leads_up(name)) << name;
}

}  // namespace
