// Whole files, compared and copied.
#include <sys/stat.h>

#include <climits>

#include "fairlead/misc.h"
#include "misc_support.h"
#include "support/faults.h"

namespace {

using fairlead_test::Call;
using fairlead_test::Fault;
using fairlead_test::file_content;
using fairlead_test::put_file;
using misc_test::Holder;

constexpr const char* kA = "/tmp/a";
constexpr const char* kB = "/tmp/b";

struct stat status_of(const char* path) {
  struct stat status = {};
  EXPECT_EQ(0, stat(path, &status)) << path;
  return status;
}

// No two blocks of it are alike.
std::string content_of(size_t size) {
  std::string content;
  for (unsigned number = 0; content.size() < size; ++number)
    content += std::to_string(number) + ",";
  content.resize(size);
  return content;
}

class FileContentTest : public fairlead_test::DeviceTest {};

// file_cmp

TEST_F(FileContentTest, cmp_of_equal_contents_is_0) {
  for (size_t size : {0u, 1u, 4095u, 4096u, 4097u, 20000u}) {
    put_file(kA, content_of(size));
    put_file(kB, content_of(size));
    EXPECT_EQ(0, file_cmp(kA, kB)) << size;
    EXPECT_EQ(0, file_cmp(kA, kA)) << size;
  }
}

TEST_F(FileContentTest, cmp_sees_a_difference_anywhere) {
  for (size_t place : {0u, 4095u, 4096u, 9999u}) {
    std::string other = content_of(10000);
    other[place] = '#';
    put_file(kA, content_of(10000));
    put_file(kB, other);
    EXPECT_EQ(1, file_cmp(kA, kB)) << place;
  }
}

TEST_F(FileContentTest, cmp_of_different_sizes_is_an_error) {
  put_file(kA, "abc");
  put_file(kB, "abcd");
  EXPECT_EQ(-1, file_cmp(kA, kB));
  EXPECT_EQ(-1, file_cmp(kB, kA));
}

TEST_F(FileContentTest, cmp_refuses_no_path) {
  put_file(kA, "abc");
  for (const char* path : {static_cast<const char*>(nullptr), ""}) {
    errno = 0;
    EXPECT_EQ(-1, file_cmp(path, kA));
    EXPECT_EQ(EINVAL, errno);
    errno = 0;
    EXPECT_EQ(-1, file_cmp(kA, path));
    EXPECT_EQ(EINVAL, errno);
  }
}

TEST_F(FileContentTest, cmp_fails_when_either_file_cannot_be_opened) {
  put_file(kA, "abc");
  EXPECT_EQ(-1, file_cmp(kA, "/tmp/none"));
  EXPECT_EQ(ENOENT, errno);
  EXPECT_EQ(-1, file_cmp("/tmp/none", kA));
  EXPECT_EQ(ENOENT, errno);
}

TEST_F(FileContentTest, cmp_fails_when_either_file_stays_locked) {
  put_file(kA, "abc");
  put_file(kB, "abc");
  Holder holder(kB);
  EXPECT_EQ(-1, file_cmp(kA, kB));
  EXPECT_EQ(EBUSY, errno);
  EXPECT_EQ(-1, file_cmp(kB, kA));
  EXPECT_EQ(EBUSY, errno);
}

TEST_F(FileContentTest, cmp_fails_when_a_size_or_a_block_cannot_be_had) {
  put_file(kA, content_of(5000));
  put_file(kB, content_of(5000));
  for (Call call : {Call::kStat, Call::kRead})
    for (int nth : {1, 2}) {
      Fault fault(call, {.nth = nth, .error = EIO});
      EXPECT_EQ(-1, file_cmp(kA, kB)) << nth;
      EXPECT_EQ(EIO, errno) << nth;
    }
}

TEST_F(FileContentTest, cmp_reads_to_the_end_behind_a_difference) {
  put_file(kA, content_of(5000));
  put_file(kB, '#' + content_of(4999));
  EXPECT_EQ(1, file_cmp(kA, kB));
  for (int nth : {3, 4}) {  // in the second block
    Fault fault(Call::kRead, {.nth = nth, .error = EIO});
    EXPECT_EQ(-1, file_cmp(kA, kB)) << nth;
  }
}

TEST_F(FileContentTest, cmp_goes_on_after_short_and_interrupted_reads) {
  put_file(kA, content_of(9000));
  put_file(kB, content_of(9000));
  {
    Fault fault(Call::kRead, {.times = 1000, .at_most = 7});
    EXPECT_EQ(0, file_cmp(kA, kB));
    EXPECT_TRUE(fault.fired());
  }
  Fault fault(Call::kRead, {.nth = 2, .error = EINTR, .times = 3});
  EXPECT_EQ(0, file_cmp(kA, kB));
}

TEST_F(FileContentTest, cmp_counts_a_file_that_tells_no_size_as_empty) {
  EXPECT_EQ(0, file_cmp("/proc/version", "/proc/loadavg"));
  ASSERT_EQ(0, mkfifo(kA, 0600));
  put_file(kB, "");
  EXPECT_EQ(0, file_cmp(kA, kB));
}

// file_copy

TEST_F(FileContentTest, copy_makes_the_same_content_and_tells_its_size) {
  for (size_t size : {0u, 1u, 4096u, 4097u, 100000u}) {
    put_file(kA, content_of(size));
    unlink(kB);
    EXPECT_EQ(static_cast<int>(size), file_copy(kA, kB));
    EXPECT_EQ(content_of(size), file_content(kB));
  }
}

TEST_F(FileContentTest, copy_empties_a_longer_destination) {
  put_file(kA, "new");
  put_file(kB, "old and longer");
  EXPECT_EQ(3, file_copy(kA, kB));
  EXPECT_EQ("new", file_content(kB));
}

TEST_F(FileContentTest, copy_gives_a_new_file_the_permissions_of_the_source) {
  put_file(kA, "secret", 04750);
  EXPECT_EQ(6, file_copy(kA, kB));
  EXPECT_EQ(0750u, status_of(kB).st_mode & 07777);
}

TEST_F(FileContentTest, copy_keeps_the_permissions_of_an_existing_file) {
  put_file(kA, "text", 0600);
  put_file(kB, "", 0664);
  EXPECT_EQ(4, file_copy(kA, kB));
  EXPECT_EQ(0664u, status_of(kB).st_mode & 07777);
}

TEST_F(FileContentTest, copy_takes_no_lock) {
  put_file(kA, "text");
  put_file(kB, "");
  Holder source(kA), destination(kB);
  EXPECT_EQ(4, file_copy(kA, kB));
  EXPECT_EQ("text", file_content(kB));
}

TEST_F(FileContentTest, copy_onto_itself_keeps_the_content) {
  put_file(kA, "precious");
  ASSERT_EQ(0, link(kA, "/tmp/second_name"));
  ASSERT_EQ(0, symlink(kA, "/tmp/link"));
  for (const char* destination : {kA, "/tmp/second_name", "/tmp/link", "/tmp/../tmp/a"}) {
    EXPECT_EQ(8, file_copy(kA, destination)) << destination;
    EXPECT_EQ("precious", file_content(kA)) << destination;
  }
}

TEST_F(FileContentTest, copy_refuses_null) {
  put_file(kA, "text");
  errno = 0;
  EXPECT_EQ(-1, file_copy(nullptr, kB));
  EXPECT_EQ(EINVAL, errno);
  errno = 0;
  EXPECT_EQ(-1, file_copy(kA, nullptr));
  EXPECT_EQ(EINVAL, errno);
}

TEST_F(FileContentTest, copy_without_a_readable_source_leaves_the_destination_alone) {
  put_file(kB, "before");
  for (const char* source : {"/tmp/none", ""}) {
    EXPECT_EQ(-1, file_copy(source, kB));
    EXPECT_EQ(ENOENT, errno);
  }
  EXPECT_EQ(-1, file_copy("/tmp", kB));
  EXPECT_EQ(EISDIR, errno);
  EXPECT_EQ("before", file_content(kB));
}

TEST_F(FileContentTest, copy_fails_when_the_destination_cannot_be_opened) {
  put_file(kA, "text");
  EXPECT_EQ(-1, file_copy(kA, "/tmp/none/file"));
  EXPECT_EQ(ENOENT, errno);
  EXPECT_EQ(-1, file_copy(kA, ""));
  EXPECT_EQ(ENOENT, errno);
  EXPECT_EQ(-1, file_copy(kA, "/tmp"));
  EXPECT_EQ(EISDIR, errno);
}

TEST_F(FileContentTest, copy_fails_on_a_full_disk) {
  put_file(kA, "text");
  EXPECT_EQ(-1, file_copy(kA, "/dev/full"));
  EXPECT_EQ(ENOSPC, errno);
}

TEST_F(FileContentTest, copy_fails_when_a_block_is_cut_short) {
  put_file(kA, content_of(10000));
  Fault fault(Call::kWrite, {.nth = 2, .at_most = 100});
  EXPECT_EQ(-1, file_copy(kA, kB));
  EXPECT_EQ(ENOSPC, errno);
  EXPECT_EQ(content_of(4196), file_content(kB));
}

TEST_F(FileContentTest, copy_passes_the_errno_of_a_failed_step_on) {
  put_file(kA, content_of(10000));
  put_file(kB, "");
  for (Call call : {Call::kStat, Call::kTruncate, Call::kRead, Call::kWrite}) {
    Fault fault(call, {.error = EIO});
    errno = 0;
    EXPECT_EQ(-1, file_copy(kA, kB));
    EXPECT_EQ(EIO, errno);
    EXPECT_TRUE(fault.fired());
  }
}

TEST_F(FileContentTest, copy_goes_on_after_interruptions_and_short_reads) {
  put_file(kA, content_of(10000));
  for (Call call : {Call::kRead, Call::kWrite}) {
    Fault fault(call, {.nth = 2, .error = EINTR, .times = 3});
    EXPECT_EQ(10000, file_copy(kA, kB));
    EXPECT_TRUE(fault.fired());
    EXPECT_EQ(content_of(10000), file_content(kB));
  }
  Fault fault(Call::kRead, {.times = 1000, .at_most = 99});
  EXPECT_EQ(10000, file_copy(kA, kB));
  EXPECT_EQ(content_of(10000), file_content(kB));
}

TEST_F(FileContentTest, copy_reads_a_file_that_tells_no_size) {
  EXPECT_GT(file_copy("/proc/self/status", kB), 0);
  EXPECT_NE(std::string::npos, file_content(kB).find("Name:"));
}

TEST_F(FileContentTest, copy_waits_for_no_fifo) {
  put_file(kA, "text");
  ASSERT_EQ(0, mkfifo("/tmp/fifo", 0600));
  EXPECT_EQ(0, file_copy("/tmp/fifo", kB));
  EXPECT_EQ(-1, file_copy(kA, "/tmp/fifo"));
  EXPECT_EQ(ENXIO, errno);
}

TEST_F(FileContentTest, copy_of_more_than_an_int_can_count_tells_the_largest_int) {
  put_file(kA, "");
  ASSERT_EQ(0, truncate(kA, (off_t{1} << 31) + 5));  // a hole: no memory is used
  EXPECT_EQ(INT_MAX, file_copy(kA, "/dev/null"));
}

}  // namespace
