// Two looks at files: the same one under any name, another one under the same name.
#include "base/same_file.h"

#include <unistd.h>

#include "support/device_test.h"

namespace {

using fairlead_test::put_file;

class SameFileTest : public fairlead_test::DeviceTest {
 protected:
  static struct stat look(const char* path) {
    struct stat status = {};
    EXPECT_EQ(0, stat(path, &status)) << path;
    return status;
  }
};

TEST_F(SameFileTest, a_file_has_any_number_of_names) {
  put_file("/tmp/a", "");
  ASSERT_EQ(0, link("/tmp/a", "/tmp/b"));
  EXPECT_TRUE(fairlead::same_file(look("/tmp/a"), look("/tmp/b")));
}

TEST_F(SameFileTest, a_name_can_pass_to_another_file) {
  put_file("/tmp/a", "");
  const struct stat before = look("/tmp/a");
  put_file("/tmp/b", "");
  ASSERT_EQ(0, rename("/tmp/b", "/tmp/a"));
  EXPECT_FALSE(fairlead::same_file(before, look("/tmp/a")));
}

}  // namespace
