// The caller's buffer, or a function's own.
#include "base/result_buffer.h"

#include <cstring>

#include "support/device_test.h"

namespace {

using fairlead::choose_buffer;
using fairlead::put_result;

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

TEST_F(ResultBufferTest, a_text_is_put_with_a_nul_behind_it_and_one_in_the_last_byte) {
  memset(callers_, 'x', sizeof callers_);
  EXPECT_EQ(callers_, put_result({callers_, 8}, "box"));
  EXPECT_STREQ("box", callers_);
  EXPECT_EQ('\0', callers_[7]);
  EXPECT_EQ('x', callers_[8]);
}

TEST_F(ResultBufferTest, a_text_is_cut_where_the_room_ends) {
  EXPECT_STREQ("bo", put_result({callers_, 3}, "box"));
  EXPECT_STREQ("", put_result({callers_, 1}, "box"));
}

}  // namespace
