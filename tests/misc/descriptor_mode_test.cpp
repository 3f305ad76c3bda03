// Descriptors that wait, and descriptors that do not.
#include "fairlead/misc.h"
#include "misc_support.h"
#include "support/faults.h"

namespace {

using fairlead_test::Call;
using fairlead_test::Fault;

class DescriptorModeTest : public fairlead_test::DeviceTest {
 protected:
  void SetUp() override {
    DeviceTest::SetUp();
    ASSERT_EQ(0, pipe2(ends_, O_CLOEXEC));
  }
  void TearDown() override {
    close(ends_[0]);
    close(ends_[1]);
    DeviceTest::TearDown();
  }
  int ends_[2];
};

TEST_F(DescriptorModeTest, nonblock_makes_a_read_return_at_once) {
  EXPECT_EQ(1, fd_nonblock(ends_[0]));
  char byte;
  EXPECT_EQ(-1, read(ends_[0], &byte, 1));
  EXPECT_EQ(EAGAIN, errno);
}

TEST_F(DescriptorModeTest, block_takes_it_back_and_leaves_the_other_flags) {
  ASSERT_EQ(0, fcntl(ends_[1], F_SETFL, O_APPEND | O_NONBLOCK));
  EXPECT_EQ(1, fd_block(ends_[1]));
  EXPECT_EQ(O_APPEND, fcntl(ends_[1], F_GETFL) & (O_APPEND | O_NONBLOCK));
  EXPECT_EQ(1, fd_nonblock(ends_[1]));
  EXPECT_EQ(O_APPEND | O_NONBLOCK, fcntl(ends_[1], F_GETFL) & (O_APPEND | O_NONBLOCK));
}

TEST_F(DescriptorModeTest, both_refuse_a_negative_descriptor) {
  for (auto* function : {fd_nonblock, fd_block}) {
    errno = 0;
    EXPECT_EQ(0, function(-1));
    EXPECT_EQ(EINVAL, errno);
  }
}

TEST_F(DescriptorModeTest, both_fail_when_the_flags_cannot_be_read_or_written) {
  for (auto* function : {fd_nonblock, fd_block}) {
    EXPECT_EQ(0, function(9999));
    EXPECT_EQ(EBADF, errno);
    for (int nth : {1, 2}) {
      Fault fault(Call::kFcntl, {.nth = nth, .error = EPERM});
      EXPECT_EQ(0, function(ends_[0])) << nth;
      EXPECT_EQ(EPERM, errno) << nth;
    }
  }
}

}  // namespace
