// A number or a text as the whole content of a file.
#include <sys/stat.h>

#include <cwchar>

#include "fairlead/misc.h"
#include "misc_support.h"
#include "support/faults.h"

namespace {

using fairlead_test::Call;
using fairlead_test::Fault;
using fairlead_test::file_content;
using fairlead_test::put_file;
using misc_test::Holder;

constexpr const char* kPath = "/tmp/small";

unsigned mode_of(const char* path) {
  struct stat status = {};
  EXPECT_EQ(0, stat(path, &status)) << path;
  return status.st_mode & 07777;
}

class SmallFileTest : public fairlead_test::DeviceTest {
 protected:
  int number_in(const std::string& content) {
    put_file(kPath, content);
    errno = ENOTTY;
    return read_int(kPath);
  }
};

// read_int

TEST_F(SmallFileTest, read_int_gives_the_number_with_errno_0) {
  EXPECT_EQ(42, number_in("42\n"));
  EXPECT_EQ(0, errno);
  EXPECT_EQ(0, number_in("0"));
  EXPECT_EQ(0, errno);
}

TEST_F(SmallFileTest, read_int_allows_blanks_a_sign_and_text_behind) {
  EXPECT_EQ(-17, number_in(" \t\n -17 degrees"));
  EXPECT_EQ(5, number_in("+5,6"));
  EXPECT_EQ(10, number_in("010"));
  EXPECT_EQ(0, number_in("0x10"));
}

TEST_F(SmallFileTest, read_int_of_text_without_a_number_is_0_with_errno_0) {
  for (const char* content : {"on", "-", " ", "\n", "--1"}) {
    EXPECT_EQ(0, number_in(content)) << content;
    EXPECT_EQ(0, errno) << content;
  }
}

TEST_F(SmallFileTest, read_int_stops_at_the_range_of_int) {
  EXPECT_EQ(2147483647, number_in("2147483647"));
  EXPECT_EQ(-2147483647 - 1, number_in("-2147483648"));
  EXPECT_EQ(2147483647, number_in("2147483648"));
  EXPECT_EQ(-2147483647 - 1, number_in("-2147483649"));
  EXPECT_EQ(2147483647, number_in("99999999999999999999999999"));
  EXPECT_EQ(0, errno);
}

TEST_F(SmallFileTest, read_int_reads_39_characters) {
  EXPECT_EQ(12, number_in(std::string(37, ' ') + "123"));
  EXPECT_EQ(0, number_in(std::string(39, ' ') + "7"));
}

TEST_F(SmallFileTest, read_int_refuses_no_path) {
  for (const char* path : {static_cast<const char*>(nullptr), ""}) {
    errno = 0;
    EXPECT_EQ(0, read_int(path));
    EXPECT_EQ(EINVAL, errno);
  }
}

TEST_F(SmallFileTest, read_int_tells_why_it_found_no_number) {
  EXPECT_EQ(0, read_int("/tmp/none"));
  EXPECT_EQ(ENOENT, errno);
  EXPECT_EQ(0, number_in(""));
  EXPECT_EQ(ENODATA, errno);
  EXPECT_EQ(0, read_int("/tmp"));
  EXPECT_EQ(EISDIR, errno);
}

TEST_F(SmallFileTest, read_int_waits_a_second_for_the_lock) {
  put_file(kPath, "42");
  Holder holder(kPath);
  EXPECT_EQ(0, read_int(kPath));
  EXPECT_EQ(EBUSY, errno);
}

TEST_F(SmallFileTest, read_int_shares_with_other_readers) {
  put_file(kPath, "42");
  Holder holder(kPath, F_RDLCK);
  EXPECT_EQ(42, read_int(kPath));
}

// write_int

TEST_F(SmallFileTest, write_int_makes_the_number_the_content) {
  EXPECT_EQ(2, write_int(kPath, 42));
  EXPECT_EQ("42", file_content(kPath));
  EXPECT_EQ(10, write_int(kPath, 4294967295u));
  EXPECT_EQ("4294967295", file_content(kPath));
  EXPECT_EQ(1, write_int(kPath, 0));
  EXPECT_EQ("0", file_content(kPath));
}

TEST_F(SmallFileTest, write_int_creates_with_mode_0644_and_keeps_an_existing_mode) {
  ASSERT_EQ(1, write_int(kPath, 1));
  EXPECT_EQ(0644u, mode_of(kPath));
  chmod(kPath, 0600);
  ASSERT_EQ(1, write_int(kPath, 1));
  EXPECT_EQ(0600u, mode_of(kPath));
}

TEST_F(SmallFileTest, write_int_takes_no_lock) {
  put_file(kPath, "1");
  Holder holder(kPath);
  EXPECT_EQ(2, write_int(kPath, 42));
  EXPECT_EQ("42", file_content(kPath));
}

TEST_F(SmallFileTest, write_int_refuses_no_path) {
  for (const char* path : {static_cast<const char*>(nullptr), ""}) {
    errno = 0;
    EXPECT_EQ(-1, write_int(path, 1));
    EXPECT_EQ(EINVAL, errno);
  }
}

TEST_F(SmallFileTest, write_int_passes_the_errno_of_the_failing_step_on) {
  EXPECT_EQ(-1, write_int("/tmp/none/file", 1));
  EXPECT_EQ(ENOENT, errno);
  EXPECT_EQ(-1, write_int("/tmp", 1));
  EXPECT_EQ(EISDIR, errno);
  EXPECT_EQ(-1, write_int("/dev/full", 1));
  EXPECT_EQ(ENOSPC, errno);
}

// read_string

TEST_F(SmallFileTest, read_string_fills_the_callers_buffer) {
  put_file(kPath, "some text\n");
  char buffer[64];
  EXPECT_EQ(buffer, read_string(kPath, buffer, sizeof buffer));
  EXPECT_STREQ("some text\n", buffer);
}

TEST_F(SmallFileTest, read_string_reads_what_fits_beside_the_terminator) {
  put_file(kPath, "0123456789");
  char buffer[8] = "#######";
  EXPECT_EQ(buffer, read_string(kPath, buffer, 5));
  EXPECT_STREQ("0123", buffer);
  EXPECT_EQ('#', buffer[5]);
}

TEST_F(SmallFileTest, read_string_without_a_buffer_has_its_own_of_10240_bytes) {
  put_file(kPath, std::string(20000, 'x'));
  char* text = read_string(kPath, nullptr, 3);
  ASSERT_NE(nullptr, text);
  EXPECT_EQ(std::string(10239, 'x'), text);
  put_file(kPath, "next");
  EXPECT_EQ(text, read_string(kPath, nullptr, 0));
  EXPECT_STREQ("next", text);
}

TEST_F(SmallFileTest, read_string_refuses_no_path_and_no_room) {
  put_file(kPath, "text");
  char buffer[8] = "before";
  for (const char* path : {static_cast<const char*>(nullptr), ""}) {
    errno = 0;
    EXPECT_EQ(nullptr, read_string(path, buffer, 8));
    EXPECT_EQ(EINVAL, errno);
  }
  for (int size : {0, -1}) {
    errno = 0;
    EXPECT_EQ(nullptr, read_string(kPath, buffer, size));
    EXPECT_EQ(EINVAL, errno);
  }
  EXPECT_EQ(nullptr, read_string(kPath, buffer, 1));
  EXPECT_EQ(ENODATA, errno);
  EXPECT_STREQ("before", buffer);
}

TEST_F(SmallFileTest, read_string_tells_why_there_is_no_text) {
  EXPECT_EQ(nullptr, read_string("/tmp/none", nullptr, 0));
  EXPECT_EQ(ENOENT, errno);
  put_file(kPath, "");
  EXPECT_EQ(nullptr, read_string(kPath, nullptr, 0));
  EXPECT_EQ(ENODATA, errno);
  EXPECT_EQ(nullptr, read_string("/tmp", nullptr, 0));
  EXPECT_EQ(EISDIR, errno);
  put_file(kPath, "text");
  Fault fault(Call::kRead, {.error = EIO});
  EXPECT_EQ(nullptr, read_string(kPath, nullptr, 0));
  EXPECT_EQ(EIO, errno);
}

TEST_F(SmallFileTest, read_string_waits_a_second_for_the_lock) {
  put_file(kPath, "text");
  Holder holder(kPath);
  EXPECT_EQ(nullptr, read_string(kPath, nullptr, 0));
  EXPECT_EQ(EBUSY, errno);
}

TEST_F(SmallFileTest, nothing_waits_for_the_other_end_of_a_fifo) {
  ASSERT_EQ(0, mkfifo(kPath, 0600));
  EXPECT_EQ(nullptr, read_string(kPath, nullptr, 0));
  EXPECT_EQ(ENODATA, errno);
  EXPECT_EQ(0, read_int(kPath));
  EXPECT_EQ(ENODATA, errno);
  EXPECT_EQ(-1, write_int(kPath, 1));
  EXPECT_EQ(ENXIO, errno);
  const std::string more_than_a_pipe_holds(2000000, 'x');
  for (auto* function : {write_string, append_string}) {
    const int written = function(kPath, "%s", more_than_a_pipe_holds.c_str());
    EXPECT_GT(written, 0);
    EXPECT_LT(written, 2000000);
  }
}

// write_string, append_string

TEST_F(SmallFileTest, write_string_makes_the_text_the_content) {
  put_file(kPath, "a longer text than the next");
  EXPECT_EQ(4, write_string(kPath, "%s-%d", "a", 42));
  EXPECT_EQ("a-42", file_content(kPath));
  EXPECT_EQ(0, write_string(kPath, "%s", ""));
  EXPECT_EQ("", file_content(kPath));
}

TEST_F(SmallFileTest, append_string_adds_to_the_end_and_creates) {
  EXPECT_EQ(4, append_string(kPath, "%s", "one\n"));
  EXPECT_EQ(4, append_string(kPath, "%s", "two\n"));
  EXPECT_EQ("one\ntwo\n", file_content(kPath));
}

TEST_F(SmallFileTest, both_create_with_mode_0644_and_keep_an_existing_mode) {
  for (auto* function : {write_string, append_string}) {
    ASSERT_EQ(1, function(kPath, "%s", "x"));
    EXPECT_EQ(0644u, mode_of(kPath));
    chmod(kPath, 0600);
    ASSERT_EQ(1, function(kPath, "%s", "x"));
    EXPECT_EQ(0600u, mode_of(kPath));
    unlink(kPath);
  }
}

TEST_F(SmallFileTest, both_write_a_text_of_any_length_as_it_was_formatted) {
  for (size_t length : {40958u, 40959u, 40960u, 40961u, 1000000u}) {
    const std::string text(length, 'x');
    EXPECT_EQ(static_cast<int>(length), write_string(kPath, "%s", text.c_str()));
    EXPECT_EQ(text, file_content(kPath));
    EXPECT_EQ(static_cast<int>(length), append_string(kPath, "%s", text.c_str()));
    EXPECT_EQ(text + text, file_content(kPath));
  }
}

TEST_F(SmallFileTest, both_write_a_nul_that_was_formatted) {
  EXPECT_EQ(3, write_string(kPath, "a%cb", 0));
  EXPECT_EQ(3, append_string(kPath, "c%cd", 0));
  EXPECT_EQ(std::string("a\0bc\0d", 6), file_content(kPath));
}

TEST_F(SmallFileTest, both_refuse_no_path_and_no_format) {
  for (auto* function : {write_string, append_string}) {
    for (const char* path : {static_cast<const char*>(nullptr), ""}) {
      errno = 0;
      EXPECT_EQ(-1, function(path, "%d", 1));
      EXPECT_EQ(EINVAL, errno);
    }
    const char* no_format = nullptr;
    errno = 0;
    EXPECT_EQ(-1, function(kPath, no_format));
    EXPECT_EQ(EINVAL, errno);
    EXPECT_FALSE(fairlead_test::exists(kPath));
  }
}

TEST_F(SmallFileTest, both_pass_the_errno_of_the_failing_step_on) {
  for (auto* function : {write_string, append_string}) {
    EXPECT_EQ(-1, function("/tmp/none/file", "%d", 1));
    EXPECT_EQ(ENOENT, errno);
    EXPECT_EQ(-1, function("/tmp", "%d", 1));
    EXPECT_EQ(EISDIR, errno);
    EXPECT_EQ(-1, function("/dev/full", "%d", 1));
    EXPECT_EQ(ENOSPC, errno);
  }
}

TEST_F(SmallFileTest, both_return_what_a_short_write_has_written) {
  for (auto* function : {write_string, append_string}) {
    unlink(kPath);
    Fault fault(Call::kWrite, {.at_most = 3});
    EXPECT_EQ(3, function(kPath, "%s", "abcdef"));
    EXPECT_EQ("abc", file_content(kPath));
  }
}

TEST_F(SmallFileTest, both_leave_the_file_alone_when_the_text_cannot_be_made) {
  const wchar_t foreign[] = {0x20ac, 0};
  put_file(kPath, "before");
  for (auto* function : {write_string, append_string}) {
    EXPECT_EQ(-1, function(kPath, "%ls", foreign));
    EXPECT_EQ(EILSEQ, errno);
    Fault fault(Call::kMalloc, {.error = ENOMEM});
    EXPECT_EQ(-1, function(kPath, "%s", "after"));
    EXPECT_EQ(ENOMEM, errno);
    EXPECT_EQ("before", file_content(kPath));
  }
}

TEST_F(SmallFileTest, write_string_empties_the_file_before_it_has_the_lock) {
  put_file(kPath, "before");
  Holder holder(kPath, F_RDLCK);
  EXPECT_EQ(-1, write_string(kPath, "%s", "after"));
  EXPECT_EQ(EBUSY, errno);
  EXPECT_EQ("", file_content(kPath));
}

TEST_F(SmallFileTest, append_string_waits_a_second_for_the_lock) {
  put_file(kPath, "before");
  Holder holder(kPath, F_RDLCK);
  EXPECT_EQ(-1, append_string(kPath, "%s", "after"));
  EXPECT_EQ(EBUSY, errno);
  EXPECT_EQ("before", file_content(kPath));
}

}  // namespace
