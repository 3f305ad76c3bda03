// The files behind shared memory.
#include <sys/mman.h>
#include <sys/stat.h>

#include "fairlead/misc.h"
#include "misc_support.h"

namespace {

constexpr const char* kPath = "/tmp/.var/memory";

class SharedMemoryTest : public fairlead_test::DeviceTest {};

TEST_F(SharedMemoryTest, open_creates_with_flags_and_mode_and_close_on_exec) {
  const int fd = sm_open(kPath, O_RDWR | O_CREAT | O_EXCL, 0640);
  ASSERT_GE(fd, 0);
  EXPECT_EQ(FD_CLOEXEC, fcntl(fd, F_GETFD));
  EXPECT_EQ(O_RDWR, fcntl(fd, F_GETFL) & O_ACCMODE);
  struct stat status;
  ASSERT_EQ(0, fstat(fd, &status));
  EXPECT_EQ(0640u, status.st_mode & 07777);
  close(fd);
  EXPECT_EQ(-1, sm_open(kPath, O_RDWR | O_CREAT | O_EXCL, 0640));
  EXPECT_EQ(EEXIST, errno);
}

TEST_F(SharedMemoryTest, open_gives_memory_that_processes_share) {
  const int fd = sm_open(kPath, O_RDWR | O_CREAT, 0600);
  ASSERT_EQ(0, ftruncate(fd, 4096));
  char* memory = static_cast<char*>(mmap(nullptr, 4096, PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0));
  close(fd);
  ASSERT_NE(MAP_FAILED, memory);
  fairlead_test::run_child([memory] { memory[0] = 'x'; });
  EXPECT_EQ('x', memory[0]);
  munmap(memory, 4096);
}

TEST_F(SharedMemoryTest, unlink_removes_the_file) {
  fairlead_test::put_file(kPath, "");
  EXPECT_EQ(0, sm_unlink(kPath));
  EXPECT_FALSE(fairlead_test::exists(kPath));
}

TEST_F(SharedMemoryTest, both_refuse_null_and_pass_errno_on) {
  errno = 0;
  EXPECT_EQ(-1, sm_open(nullptr, O_RDWR, 0));
  EXPECT_EQ(EINVAL, errno);
  errno = 0;
  EXPECT_EQ(-1, sm_unlink(nullptr));
  EXPECT_EQ(EINVAL, errno);
  for (const char* path : {"", "/tmp/none"}) {
    EXPECT_EQ(-1, sm_open(path, O_RDWR, 0));
    EXPECT_EQ(ENOENT, errno);
    EXPECT_EQ(-1, sm_unlink(path));
    EXPECT_EQ(ENOENT, errno);
  }
}

}  // namespace
