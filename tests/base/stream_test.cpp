// Streams that are closed on every way out.
#include "base/stream.h"

#include <cerrno>

#include "support/device_test.h"

namespace {

class StreamTest : public fairlead_test::DeviceTest {};

TEST_F(StreamTest, is_closed_at_the_end_of_the_block_with_errno_kept) {
  fairlead_test::put_file("/tmp/text", "content");
  {
    const fairlead::Stream stream(fopen("/tmp/text", "re"));
    ASSERT_TRUE(stream);
    EXPECT_EQ('c', fgetc(stream.get()));
    errno = EPROTO;
  }
  EXPECT_EQ(EPROTO, errno);  // that nothing stays open is for the fixture to see
}

TEST_F(StreamTest, of_a_file_that_can_not_be_opened_is_empty) {
  EXPECT_FALSE(fairlead::Stream(fopen("/tmp/missing", "re")));
}

}  // namespace
