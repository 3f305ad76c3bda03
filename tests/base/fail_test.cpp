// The early return of a refused call.
#include "base/fail.h"

#include "support/device_test.h"

namespace {

using fairlead::fail;

class FailTest : public fairlead_test::DeviceTest {};

TEST_F(FailTest, sets_errno_and_gives_the_empty_value) {
  EXPECT_EQ(0, fail<int>(EINVAL));
  EXPECT_EQ(EINVAL, errno);
  EXPECT_EQ(nullptr, fail<char*>(ENOMEM));
  EXPECT_EQ(ENOMEM, errno);
}

TEST_F(FailTest, gives_the_value_that_is_asked_for) {
  EXPECT_EQ(-1, fail(EIO, -1));
  EXPECT_EQ(EIO, errno);
}

}  // namespace
