// How many entries a directory has.
#include "fairlead/misc.h"
#include "misc_support.h"
#include "support/faults.h"

namespace {

class DirectoryCountTest : public fairlead_test::DeviceTest {};

TEST_F(DirectoryCountTest, counts_files_folders_and_hidden_names) {
  fairlead_test::make_directories("/tmp/count");
  EXPECT_EQ(0, dir_sum("/tmp/count"));
  fairlead_test::put_file("/tmp/count/file", "");
  fairlead_test::put_file("/tmp/count/.hidden", "");
  fairlead_test::put_file("/tmp/count/...", "");
  fairlead_test::put_file("/tmp/count/folder/inner", "");
  ASSERT_EQ(0, symlink("nowhere", "/tmp/count/link"));
  EXPECT_EQ(5, dir_sum("/tmp/count"));
}

TEST_F(DirectoryCountTest, counts_many) {
  for (int number = 0; number < 1000; ++number)
    fairlead_test::put_file("/tmp/count/" + std::to_string(number), "");
  EXPECT_EQ(1000, dir_sum("/tmp/count/"));
}

TEST_F(DirectoryCountTest, fails_when_there_is_no_directory_to_open) {
  fairlead_test::put_file("/tmp/file", "");
  errno = 0;
  EXPECT_EQ(-1, dir_sum(nullptr));
  EXPECT_EQ(EINVAL, errno);
  for (const char* path : {"", "/tmp/none"}) {
    EXPECT_EQ(-1, dir_sum(path));
    EXPECT_EQ(ENOENT, errno);
  }
  EXPECT_EQ(-1, dir_sum("/tmp/file"));
  EXPECT_EQ(ENOTDIR, errno);
  fairlead_test::Fault fault(fairlead_test::Call::kOpendir, {.error = EMFILE});
  EXPECT_EQ(-1, dir_sum("/tmp"));
  EXPECT_EQ(EMFILE, errno);
}

}  // namespace
