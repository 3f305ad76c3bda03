// A message from a descriptor.
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

#include "fairlead/talk/node.h"
#include "fairlead/talk/text.h"
#include "support/child.h"
#include "support/device_test.h"
#include "support/faults.h"
#include "support/spelled.h"

namespace {

using fairlead_test::Call;
using fairlead_test::Fault;

class MessageTest : public fairlead_test::DeviceTest {
 protected:
  void SetUp() override {
    DeviceTest::SetUp();
    ASSERT_EQ(0, socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends_));
  }

  void TearDown() override {
    close(ends_[0]);
    if (ends_[1] >= 0) close(ends_[1]);
    DeviceTest::TearDown();
  }

  void send(const std::string& bytes) {
    ASSERT_EQ(static_cast<ssize_t>(bytes.size()), write(ends_[1], bytes.data(), bytes.size()));
  }

  void hang_up() {
    close(ends_[1]);
    ends_[1] = -1;
  }

  std::string receive() { return fairlead_test::spelled(FdTalk(ends_[0])); }

  int ends_[2];
};

TEST_F(MessageTest, a_nul_ends_the_message_while_the_stream_is_open) {
  send(std::string("{\"a\":\"b\"}\0", 10));
  EXPECT_EQ("{\"a\":\"b\"}", receive());
}

TEST_F(MessageTest, the_end_of_the_stream_ends_the_message) {
  send(" \r\n plain words \n\r ");
  hang_up();
  EXPECT_EQ("plain words", receive());
}

TEST_F(MessageTest, single_bytes_are_codes) {
  send(std::string("\1\0", 2));
  EXPECT_EQ("done", receive());
  send("\2");
  hang_up();
  EXPECT_EQ("failed", receive());
}

TEST_F(MessageTest, a_code_counts_behind_white_space_and_whatever_follows_it) {
  send(std::string("\r\n \1\0", 5));
  EXPECT_EQ("done", receive());
  send(std::string("\1{}\0", 4));
  EXPECT_EQ("done", receive());
  send(std::string("\2{}\0", 4));
  EXPECT_EQ("failed", receive());
  send(std::string(" {\"a\":\"\1\"}\0", 11));
  EXPECT_EQ("{\"a\":\"\1\"}", receive()) << "not in front";
}

TEST_F(MessageTest, nothing_gives_null_with_einval) {
  hang_up();
  errno = 0;
  EXPECT_EQ("null", receive());
  EXPECT_EQ(EINVAL, errno);
}

TEST_F(MessageTest, blanks_alone_give_null_with_einval) {
  send(" \n\r ");
  hang_up();
  errno = 0;
  EXPECT_EQ("null", receive());
  EXPECT_EQ(EINVAL, errno);
}

TEST_F(MessageTest, a_nul_inside_a_piece_hides_the_rest) {
  send(std::string("seen\0hidden", 11));
  hang_up();
  EXPECT_EQ("seen", receive());
}

TEST_F(MessageTest, a_nul_inside_the_first_4095_bytes_does_not_end_the_reading) {
  for (size_t length = 1; length < 4095; ++length) {
    send(std::string(length - 1, 'x') + '\0' + std::string(4095 - length, 'y'));
    send(std::string(1, '\0'));
    EXPECT_EQ(length == 1 ? "null" : std::string(length - 1, 'x'), receive());
    char left;
    ASSERT_EQ(-1, recv(ends_[0], &left, 1, MSG_DONTWAIT)) << length;
  }
}

TEST_F(MessageTest, messages_around_the_buffer_size_arrive_whole) {
  for (size_t size : {1u, 4094u, 4095u, 4096u, 4097u, 8191u, 8192u, 100000u}) {
    const std::string text(size, 'x');
    fairlead_test::Child sender([&] {
      const std::string bytes = text + '\0';
      return write(ends_[1], bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()) ? 0
                                                                                               : 1;
    });
    EXPECT_EQ(text, receive()) << size;
    EXPECT_EQ(0, sender.wait().status);
  }
}

TEST_F(MessageTest, a_failed_or_interrupted_read_gives_null) {
  send(std::string("text\0", 5));
  for (int error : {EIO, EINTR}) {
    Fault fault(Call::kRead, {.error = error});
    errno = 0;
    EXPECT_EQ("null", receive());
    EXPECT_EQ(error, errno);
  }
}

TEST_F(MessageTest, a_lack_of_memory_gives_null) {
  send(std::string(5000, 'x'));
  hang_up();
  Fault fault(Call::kMalloc, {.nth = 1, .error = ENOMEM});
  EXPECT_EQ("null", receive());
}

TEST_F(MessageTest, a_bad_descriptor_gives_null) {
  errno = 0;
  EXPECT_EQ(nullptr, FdTalk(-1));
  EXPECT_EQ(EBADF, errno);
}

}  // namespace
