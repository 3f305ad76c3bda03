// The names in a directory.
#include "base/directory.h"

#include <fcntl.h>

#include <set>
#include <string>

#include "support/device_test.h"

namespace {

using fairlead::Directory;

class DirectoryTest : public fairlead_test::DeviceTest {
 protected:
  void SetUp() override {
    DeviceTest::SetUp();
    for (const char* name : {"one", "two", ".hidden", "..odd"})
      fairlead_test::put_file(std::string("/tmp/names/") + name, "");
  }
};

TEST_F(DirectoryTest, next_gives_every_name_and_then_null) {
  Directory directory("/tmp/names");
  ASSERT_TRUE(directory);
  std::multiset<std::string> names;
  while (const char* name = directory.next()) names.insert(name);
  EXPECT_EQ((std::multiset<std::string>{".", "..", "one", "two", ".hidden", "..odd"}), names);
}

TEST_F(DirectoryTest, next_visible_leaves_names_with_a_dot_out) {
  Directory directory("/tmp/names");
  std::multiset<std::string> names;
  while (const char* name = directory.next_visible()) names.insert(name);
  EXPECT_EQ((std::multiset<std::string>{"one", "two"}), names);
}

TEST_F(DirectoryTest, a_missing_one_is_false_with_errno) {
  Directory directory("/tmp/none");
  EXPECT_FALSE(directory);
  EXPECT_EQ(ENOENT, errno);
}

TEST_F(DirectoryTest, is_not_inherited_by_programs) {
  const int next = open("/dev/null", O_RDONLY | O_CLOEXEC);
  close(next);
  Directory directory("/tmp/names");
  EXPECT_EQ(FD_CLOEXEC, fcntl(next, F_GETFD));
}

TEST_F(DirectoryTest, closing_keeps_errno) {
  {
    Directory directory("/tmp/names");
    errno = ENOTTY;
  }
  EXPECT_EQ(ENOTTY, errno);
}

}  // namespace
