// Blocks from malloc that are freed on every way out.
#include "base/owned.h"

#include <cstring>

#include "support/device_test.h"
#include "support/faults.h"

namespace {

struct Record {
  char name[64];
  void* link;
};

class OwnedTest : public fairlead_test::DeviceTest {};

TEST_F(OwnedTest, zeroed_gives_a_record_with_every_byte_0) {
  for (int round = 0; round < 3; ++round) {  // memory that was used before included
    const auto record = fairlead::zeroed<Record>();
    ASSERT_TRUE(record);
    const Record empty = {};
    EXPECT_EQ(0, memcmp(&empty, record.get(), sizeof empty));
    memset(static_cast<void*>(record.get()), 'x', sizeof(Record));
  }
}

TEST_F(OwnedTest, zeroed_without_memory_is_empty_with_enomem) {
  fairlead_test::Fault fault(fairlead_test::Call::kMalloc, {.error = ENOMEM});
  errno = 0;
  EXPECT_FALSE(fairlead::zeroed<Record>());
  EXPECT_EQ(ENOMEM, errno);
}

TEST_F(OwnedTest, freeing_keeps_errno) {
  {
    const fairlead::OwnedText text(strdup("text"));
    errno = ENOTTY;
  }
  EXPECT_EQ(ENOTTY, errno);
}

}  // namespace
