// The end of a wait that is made of several.
#include "base/deadline.h"

#include <climits>
#include <ctime>

#include "support/device_test.h"

namespace {

using fairlead::Deadline;

class DeadlineTest : public fairlead_test::DeviceTest {};

TEST_F(DeadlineTest, none_of_the_time_is_gone_at_first) {
  const Deadline deadline(60);
  EXPECT_FALSE(deadline.passed());
  EXPECT_GT(deadline.milliseconds_left(), 50000);
  EXPECT_LE(deadline.milliseconds_left(), 60000);
}

TEST_F(DeadlineTest, it_passes_and_nothing_is_left) {
  const Deadline deadline(1);
  const timespec longer = {1, 1000000};
  nanosleep(&longer, nullptr);
  EXPECT_TRUE(deadline.passed());
  EXPECT_EQ(0, deadline.milliseconds_left());
}

TEST_F(DeadlineTest, what_an_int_cannot_hold_is_as_long_as_it_can) {
  for (const int seconds : {INT_MAX / 1000 + 100, 4294968, INT_MAX}) {
    const Deadline deadline(seconds);
    EXPECT_FALSE(deadline.passed()) << seconds;
    EXPECT_EQ(INT_MAX, deadline.milliseconds_left()) << seconds;
  }
}

TEST_F(DeadlineTest, no_time_has_passed_from_the_start) { EXPECT_TRUE(Deadline(0).passed()); }

}  // namespace
