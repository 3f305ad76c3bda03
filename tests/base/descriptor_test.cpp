// Descriptors that are closed on every way out.
#include "base/descriptor.h"

#include <fcntl.h>

#include <type_traits>

#include "support/child.h"
#include "support/device_test.h"

namespace {

using fairlead::Descriptor;

static_assert(!std::is_copy_constructible_v<Descriptor>);
static_assert(!std::is_copy_assignable_v<Descriptor>);

class DescriptorTest : public fairlead_test::DeviceTest {};

int opened() { return open("/dev/null", O_RDWR | O_CLOEXEC); }
bool is_open(int fd) { return fcntl(fd, F_GETFD) >= 0; }

TEST_F(DescriptorTest, owns_none_at_first) {
  const Descriptor none, failed(-1);
  EXPECT_FALSE(none);
  EXPECT_FALSE(failed);
  EXPECT_EQ(-1, none.get());
}

TEST_F(DescriptorTest, closes_at_the_end_of_the_block) {
  const int fd = opened();
  {
    const Descriptor file(fd);
    EXPECT_TRUE(file);
    EXPECT_EQ(fd, file.get());
  }
  EXPECT_FALSE(is_open(fd));
}

TEST_F(DescriptorTest, counts_number_0_as_a_descriptor) {
  Descriptor file(0);
  EXPECT_TRUE(file);
  EXPECT_EQ(0, file.release());
}

TEST_F(DescriptorTest, release_hands_it_out) {
  Descriptor file(opened());
  const int fd = file.release();
  EXPECT_FALSE(file);
  file.reset();
  EXPECT_TRUE(is_open(fd));
  close(fd);
}

TEST_F(DescriptorTest, moving_hands_it_over_and_closes_what_was_there) {
  const int first = opened(), second = opened();
  Descriptor a(first), b(second);
  a = std::move(b);
  EXPECT_FALSE(is_open(first));
  EXPECT_EQ(second, a.get());
  const Descriptor c(std::move(a));
  EXPECT_EQ(second, c.get());
  EXPECT_FALSE(a);  // NOLINT(bugprone-use-after-move): what a move leaves is what is tested
}

TEST_F(DescriptorTest, moving_onto_itself_keeps_it) {
  Descriptor file(opened());
  Descriptor& same = file;
  file = std::move(same);
  EXPECT_TRUE(is_open(file.get()));
}

TEST_F(DescriptorTest, reset_closes_and_takes_another) {
  const int first = opened(), second = opened();
  Descriptor file(first);
  file.reset(second);
  EXPECT_FALSE(is_open(first));
  EXPECT_TRUE(is_open(second));
}

TEST_F(DescriptorTest, closing_keeps_errno) {
  errno = ENOTTY;
  { const Descriptor not_open(9999); }
  EXPECT_EQ(ENOTTY, errno);
}

TEST_F(DescriptorTest, moving_one_onto_itself_keeps_it) {
  Descriptor own(open("/dev/null", O_RDONLY | O_CLOEXEC));
  Descriptor& same = own;
  own = std::move(same);
  EXPECT_TRUE(own);
}

TEST_F(DescriptorTest, beside_standard_moves_a_file_away_from_the_standard_numbers) {
  const auto ended = fairlead_test::run_child([] {
    close(STDIN_FILENO);
    Descriptor low(open("/dev/null", O_RDONLY | O_CLOEXEC));
    const bool was_low = low.get() == STDIN_FILENO;
    const Descriptor moved = fairlead::beside_standard(std::move(low));
    const bool close_on_exec = fcntl(moved.get(), F_GETFD) & FD_CLOEXEC;
    return was_low && moved.get() > STDERR_FILENO && close_on_exec && !is_open(STDIN_FILENO);
  });
  EXPECT_EQ(1, ended.status);
}

TEST_F(DescriptorTest, beside_standard_leaves_other_numbers) {
  const int fd = opened();
  const Descriptor same = fairlead::beside_standard(Descriptor(fd));
  EXPECT_EQ(fd, same.get());
  EXPECT_FALSE(fairlead::beside_standard(Descriptor()));
}

}  // namespace
