// errno, kept over a block.
#include "base/errno_keeper.h"

#include "support/device_test.h"

namespace {

class ErrnoKeeperTest : public fairlead_test::DeviceTest {};

TEST_F(ErrnoKeeperTest, puts_back_what_it_found) {
  for (int found : {0, ENOTTY}) {
    errno = found;
    {
      fairlead::ErrnoKeeper keep;
      errno = EIO;
    }
    EXPECT_EQ(found, errno);
  }
}

}  // namespace
