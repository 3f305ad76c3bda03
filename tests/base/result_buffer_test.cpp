// The caller's buffer, or a function's own.
#include "base/result_buffer.h"

#include "support/device_test.h"

namespace {

using fairlead::choose_buffer;

class ResultBufferTest : public fairlead_test::DeviceTest {
 protected:
  char own_[256];
  char callers_[16];
};

TEST_F(ResultBufferTest, the_callers_buffer_wins) {
  const auto chosen = choose_buffer(callers_, 16, own_);
  EXPECT_EQ(callers_, chosen.text);
  EXPECT_EQ(16u, chosen.size);
}

TEST_F(ResultBufferTest, room_for_a_terminator_is_enough) {
  EXPECT_EQ(callers_, choose_buffer(callers_, 1, own_).text);
}

TEST_F(ResultBufferTest, the_own_one_serves_without_a_buffer_or_room) {
  for (int size : {0, -1}) EXPECT_EQ(own_, choose_buffer(callers_, size, own_).text);
  const auto chosen = choose_buffer(nullptr, 16, own_);
  EXPECT_EQ(own_, chosen.text);
  EXPECT_EQ(sizeof own_, chosen.size);
}

}  // namespace
