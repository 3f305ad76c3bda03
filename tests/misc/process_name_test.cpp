// The name the kernel shows for a process.
#include "fairlead/misc.h"
#include "misc_support.h"

namespace {

class ProcessNameTest : public fairlead_test::DeviceTest {
 protected:
  void SetUp() override {
    DeviceTest::SetUp();
    ASSERT_EQ(0, get_proc_name(before_));
  }
  void TearDown() override {
    set_proc_name(before_);
    DeviceTest::TearDown();
  }
  char before_[16];
};

TEST_F(ProcessNameTest, set_changes_what_the_kernel_shows) {
  EXPECT_EQ(0, set_proc_name("router"));
  EXPECT_EQ("router\n", fairlead_test::file_content("/proc/self/comm"));
  char name[16];
  EXPECT_EQ(0, get_proc_name(name));
  EXPECT_STREQ("router", name);
}

TEST_F(ProcessNameTest, set_keeps_15_characters) {
  EXPECT_EQ(0, set_proc_name("0123456789abcdefgh"));
  char name[16];
  EXPECT_EQ(0, get_proc_name(name));
  EXPECT_STREQ("0123456789abcde", name);
}

TEST_F(ProcessNameTest, both_refuse_null) {
  errno = 0;
  EXPECT_EQ(-1, set_proc_name(nullptr));
  EXPECT_EQ(EINVAL, errno);
  errno = 0;
  EXPECT_EQ(-1, get_proc_name(nullptr));
  EXPECT_EQ(EINVAL, errno);
}

TEST_F(ProcessNameTest, the_titles_are_entry_points_that_change_nothing) {
  init_proc_title();
  set_proc_title();
  char name[16];
  EXPECT_EQ(0, get_proc_name(name));
  EXPECT_STREQ(before_, name);
}

}  // namespace
