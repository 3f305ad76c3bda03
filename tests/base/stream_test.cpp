// Streams that are closed on every way out.
#include "base/stream.h"

#include <fcntl.h>

#include <cerrno>

#include "support/device_test.h"
#include "support/faults.h"

namespace {

class StreamTest : public fairlead_test::DeviceTest {};

TEST_F(StreamTest, is_closed_at_the_end_of_the_block_with_errno_kept) {
  fairlead_test::put_file("/tmp/text", "content");
  {
    const fairlead::Stream stream = fairlead::open_stream("/tmp/text");
    ASSERT_TRUE(stream);
    EXPECT_EQ('c', fgetc(stream.get()));
    errno = EPROTO;
  }
  EXPECT_EQ(EPROTO, errno);  // that nothing stays open is for the fixture to see
}

TEST_F(StreamTest, open_stream_gives_an_executed_program_nothing) {
  fairlead_test::put_file("/tmp/text", "content");
  const fairlead::Stream stream = fairlead::open_stream("/tmp/text");
  ASSERT_TRUE(stream);
  EXPECT_EQ(FD_CLOEXEC, fcntl(fileno(stream.get()), F_GETFD));
}

TEST_F(StreamTest, open_stream_of_a_file_that_can_not_be_opened_is_empty_with_errno) {
  errno = 0;
  EXPECT_FALSE(fairlead::open_stream("/tmp/missing"));
  EXPECT_EQ(ENOENT, errno);
}

TEST_F(StreamTest, open_stream_without_memory_is_empty_with_errno_and_leaves_nothing_open) {
  fairlead_test::put_file("/tmp/text", "content");
  {
    const fairlead_test::Fault fault(fairlead_test::Call::kMalloc, {.error = ENOMEM});
    EXPECT_FALSE(fairlead::open_stream("/tmp/text"));
    EXPECT_TRUE(fault.fired());
  }
  EXPECT_EQ(ENOMEM, errno);  // that nothing stays open is for the fixture to see
}

}  // namespace
