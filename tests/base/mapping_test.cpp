// A shared mapping of a file, until the end of the block.
#include "base/mapping.h"

#include <fcntl.h>

#include <cstring>
#include <string>
#include <type_traits>

#include "base/descriptor.h"
#include "support/device_test.h"

namespace {

using fairlead::Descriptor;
using fairlead::Mapping;

static_assert(!std::is_copy_constructible_v<Mapping>);

constexpr const char* kPath = "/tmp/mapped";
constexpr size_t kSize = 4096;

class MappingTest : public fairlead_test::DeviceTest {
 protected:
  void SetUp() override {
    DeviceTest::SetUp();
    fairlead_test::put_file(kPath, std::string(kSize, 'x'));
    file_ = Descriptor(open(kPath, O_RDWR | O_CLOEXEC));
  }
  void TearDown() override {
    file_.reset();
    DeviceTest::TearDown();
  }

  Mapping mapped() { return Mapping(file_.get(), kSize, PROT_READ | PROT_WRITE); }

  static bool is_mapped() {
    return fairlead_test::file_content("/proc/self/maps").find(kPath) != std::string::npos;
  }

  Descriptor file_;
};

TEST_F(MappingTest, maps_nothing_at_first) {
  const Mapping none;
  EXPECT_FALSE(none);
  EXPECT_EQ(0u, none.size());
}

TEST_F(MappingTest, what_is_written_through_it_is_in_the_file) {
  {
    const Mapping mapping = mapped();
    ASSERT_TRUE(mapping);
    EXPECT_EQ(kSize, mapping.size());
    memcpy(mapping.address(), "abc", 3);
  }
  EXPECT_EQ("abcx", fairlead_test::file_content(kPath).substr(0, 4));
}

TEST_F(MappingTest, ends_with_its_block) {
  {
    const Mapping mapping = mapped();
    EXPECT_TRUE(is_mapped());
  }
  EXPECT_FALSE(is_mapped());
}

TEST_F(MappingTest, a_refused_one_is_false_with_errno) {
  const Mapping refused(-1, kSize, PROT_READ);
  EXPECT_FALSE(refused);
  EXPECT_EQ(EBADF, errno);
}

TEST_F(MappingTest, moving_hands_it_over) {
  Mapping first = mapped();
  void* address = first.address();
  Mapping second(std::move(first));
  EXPECT_EQ(address, second.address());
  EXPECT_EQ(kSize, second.size());
  Mapping third;
  third = std::move(second);
  EXPECT_EQ(address, third.address());
  EXPECT_TRUE(is_mapped());
}

TEST_F(MappingTest, release_keeps_it_mapped) {
  void* address;
  {
    Mapping mapping = mapped();
    address = mapping.release();
    EXPECT_FALSE(mapping);
  }
  EXPECT_TRUE(is_mapped());
  munmap(address, kSize);
}

TEST_F(MappingTest, ending_keeps_errno) {
  {
    const Mapping mapping = mapped();
    errno = ENOTTY;
  }
  EXPECT_EQ(ENOTTY, errno);
}

}  // namespace
