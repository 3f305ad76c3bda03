// Files that are opened and locked in one step.
#include <sys/stat.h>

#include "fairlead/misc.h"
#include "misc_support.h"
#include "support/faults.h"

namespace {

using fairlead_test::Call;
using fairlead_test::Fault;
using misc_test::Holder;

constexpr const char* kPath = "/tmp/lock";

class LockOpenTest : public fairlead_test::DeviceTest {};

TEST_F(LockOpenTest, open_for_writing_takes_a_write_lock) {
  fairlead_test::put_file(kPath, "");
  for (int flags : {O_WRONLY, O_RDWR}) {
    const int fd = lock_open(kPath, flags, 0, 1);
    ASSERT_GE(fd, 0);
    EXPECT_FALSE(misc_test::lockable_elsewhere(kPath, F_RDLCK));
    EXPECT_EQ(0, lock_close(fd));
    EXPECT_TRUE(misc_test::lockable_elsewhere(kPath));
  }
}

TEST_F(LockOpenTest, open_for_reading_takes_a_read_lock) {
  fairlead_test::put_file(kPath, "");
  const int fd = lock_open(kPath, O_RDONLY, 0, 1);
  ASSERT_GE(fd, 0);
  EXPECT_TRUE(misc_test::lockable_elsewhere(kPath, F_RDLCK));
  EXPECT_FALSE(misc_test::lockable_elsewhere(kPath, F_WRLCK));
  EXPECT_EQ(0, lock_close(fd));
}

TEST_F(LockOpenTest, open_locks_the_whole_file_and_beyond) {
  fairlead_test::put_file(kPath, "abc");
  const int fd = lock_open(kPath, O_RDWR | O_APPEND, 0, 1);
  fairlead_test::run_child([] {
    const int other = open(kPath, O_RDWR | O_CLOEXEC);
    EXPECT_EQ(getppid(), lockfd_get(other, 1, 0, 0, 1));
    EXPECT_EQ(getppid(), lockfd_get(other, 1, 1000000, 0, 1));
  });
  lock_close(fd);
}

TEST_F(LockOpenTest, open_creates_with_the_mode) {
  const int fd = lock_open(kPath, O_RDWR | O_CREAT, 0640, 1);
  ASSERT_GE(fd, 0);
  struct stat status;
  ASSERT_EQ(0, stat(kPath, &status));
  EXPECT_EQ(0640u, status.st_mode & 07777);
  lock_close(fd);
}

TEST_F(LockOpenTest, open_gives_a_descriptor_that_a_program_does_not_inherit) {
  const int fd = lock_open(kPath, O_RDWR | O_CREAT, 0644, 1);
  EXPECT_EQ(FD_CLOEXEC, fcntl(fd, F_GETFD));
  lock_close(fd);
}

TEST_F(LockOpenTest, open_refuses_no_path) {
  for (const char* path : {static_cast<const char*>(nullptr), ""}) {
    errno = 0;
    EXPECT_EQ(-1, lock_open(path, O_RDONLY, 0, 1));
    EXPECT_EQ(EINVAL, errno);
  }
}

TEST_F(LockOpenTest, open_passes_the_errno_of_open_on) {
  EXPECT_EQ(-1, lock_open("/tmp/none", O_RDONLY, 0, 1));
  EXPECT_EQ(ENOENT, errno);
  EXPECT_EQ(-1, lock_open("/tmp", O_RDWR, 0, 1));
  EXPECT_EQ(EISDIR, errno);
}

// The fixture sees to it that no descriptor stays.
TEST_F(LockOpenTest, open_fails_with_ebusy_when_the_file_stays_locked) {
  fairlead_test::put_file(kPath, "");
  Holder holder(kPath);
  for (int flags : {O_RDONLY, O_RDWR}) {
    errno = 0;
    EXPECT_EQ(-1, lock_open(kPath, flags, 0, 1));
    EXPECT_EQ(EBUSY, errno);
  }
}

TEST_F(LockOpenTest, open_without_wait_fails_at_once) {
  fairlead_test::put_file(kPath, "");
  Holder holder(kPath);
  EXPECT_EQ(-1, lock_open(kPath, O_RDWR, 0, 0));
  EXPECT_TRUE(errno == EAGAIN || errno == EACCES) << errno;
}

TEST_F(LockOpenTest, open_truncates_before_the_lock_is_granted) {
  fairlead_test::put_file(kPath, "precious");
  Holder holder(kPath);
  EXPECT_EQ(-1, lock_open(kPath, O_RDWR | O_TRUNC, 0, 0));
  EXPECT_EQ("", fairlead_test::file_content(kPath));
}

TEST_F(LockOpenTest, close_refuses_a_negative_descriptor) {
  errno = 0;
  EXPECT_EQ(-1, lock_close(-1));
  EXPECT_EQ(EINVAL, errno);
}

TEST_F(LockOpenTest, close_of_what_is_not_open_tells_ebadf_and_succeeds) {
  errno = 0;
  EXPECT_EQ(0, lock_close(9999));
  EXPECT_EQ(EBADF, errno);
}

TEST_F(LockOpenTest, close_keeps_the_errno_of_a_failed_free) {
  const int fd = lock_open(kPath, O_RDWR | O_CREAT, 0644, 1);
  Fault fault(Call::kFcntl, {.error = EPERM});
  EXPECT_EQ(0, lock_close(fd));
  EXPECT_EQ(EPERM, errno);
  EXPECT_EQ(-1, fcntl(fd, F_GETFD)) << "the descriptor is closed all the same";
}

}  // namespace
