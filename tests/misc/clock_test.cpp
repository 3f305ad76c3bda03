// The time of day by date(1), and the time since boot out of files of the test's own.
#include <sys/stat.h>

#include <cstdlib>
#include <ctime>
#include <regex>
#include <string>

#include "fairlead/misc.h"
#include "network_support.h"
#include "support/capture.h"

namespace {

class ClockTest : public misc_test::NetworkTest {
 protected:
  // Checks on a device that has been up for so long, in the form of the kernel.
  void with_uptime(const std::string& text, std::function<void()> checks) {
    with_table("/proc/uptime", text, checks);
  }
};

// A program path of the test's own until the end of the block.
class OwnPath {
 public:
  explicit OwnPath(const std::string& path) : former_(getenv("PATH")) {
    setenv("PATH", path.c_str(), 1);
  }
  ~OwnPath() { setenv("PATH", former_.c_str(), 1); }

 private:
  std::string former_;
};

void put_date(const std::string& script) {
  fairlead_test::make_directories("/tmp/bin");
  fairlead_test::put_file("/tmp/bin/date", "#!/bin/sh\n" + script, 0755);
}

using Form = char* (*)(char*, int);
using FormSince = char* (*)(const char*, char*, int);

std::string told(Form form) {
  char buffer[32] = "untouched";
  char* const result = form(buffer, sizeof buffer);
  if (!result) return std::string("<null> ") + buffer;
  EXPECT_EQ(buffer, result);
  return buffer;
}

std::string told(FormSince form, const char* start) {
  char buffer[32] = "untouched";
  char* const result = form(start, buffer, sizeof buffer);
  if (!result) return std::string("<null> ") + buffer;
  EXPECT_EQ(buffer, result);
  return buffer;
}

std::string local_time(time_t now) {
  char text[32];
  strftime(text, sizeof text, "%H:%M:%S:%m:%d:%Y", localtime(&now));
  return text;
}

// As date(1) asks for it; time(2) may be some milliseconds behind.
time_t seconds_now() {
  timespec now;
  clock_gettime(CLOCK_REALTIME, &now);
  return now.tv_sec;
}

TEST_F(ClockTest, time_getting_gives_the_local_time) {
  const time_t before = seconds_now();
  const std::string text = told(time_getting);
  const time_t after = seconds_now();
  bool found = false;
  for (time_t now = before; now <= after; ++now) found = found || text == local_time(now);
  EXPECT_TRUE(found) << text;
}

TEST_F(ClockTest, time_getting_has_six_fields) {
  EXPECT_TRUE(std::regex_match(told(time_getting),
                               std::regex("\\d\\d:\\d\\d:\\d\\d:\\d\\d:\\d\\d:\\d\\d\\d\\d")));
}

TEST_F(ClockTest, time_getting_leaves_its_file_and_rewrites_it) {
  fairlead_test::put_file("/tmp/.now", "something much longer than a time of day\nand more\n");
  const std::string text = told(time_getting);
  EXPECT_EQ(text + "\n", fairlead_test::file_content("/tmp/.now"));
}

TEST_F(ClockTest, time_getting_asks_date_for_the_format) {
  put_date("echo \"$# $1\"\necho noise >&2\n");
  const OwnPath path("/tmp/bin:/usr/bin:/bin");
  const fairlead_test::Captured shown =
      fairlead_test::capture([] { EXPECT_EQ("1 +%H:%M:%S:%m:%d:%Y", told(time_getting)); });
  EXPECT_EQ("", shown.out + shown.err);
}

TEST_F(ClockTest, time_getting_cuts_the_text_and_one_character_more) {
  put_date("echo 01:02:03:04:05:2026\n");
  const OwnPath path("/tmp/bin:/usr/bin:/bin");
  char buffer[] = "---------";
  EXPECT_EQ(buffer, time_getting(buffer, 9));
  EXPECT_STREQ("01:02:0", buffer);
  char exact[21];
  EXPECT_EQ(exact, time_getting(exact, sizeof exact));
  EXPECT_STREQ("01:02:03:04:05:2026", exact);
}

TEST_F(ClockTest, time_getting_fails_when_date_fails) {
  put_date("echo 01:02:03:04:05:2026\nexit 1\n");
  const OwnPath path("/tmp/bin:/usr/bin:/bin");
  EXPECT_EQ("<null> untouched", told(time_getting));
}

TEST_F(ClockTest, time_getting_fails_when_there_is_no_date) {
  fairlead_test::make_directories("/tmp/empty");
  const OwnPath path("/tmp/empty");
  EXPECT_EQ("<null> untouched", told(time_getting));
}

TEST_F(ClockTest, time_getting_fails_when_date_says_nothing) {
  put_date("exit 0\n");
  const OwnPath path("/tmp/bin:/usr/bin:/bin");
  errno = 0;
  EXPECT_EQ("<null> untouched", told(time_getting));
  EXPECT_EQ(ENODATA, errno);
}

TEST_F(ClockTest, time_getting_fails_when_its_file_cannot_be_written) {
  fairlead_test::make_directories("/tmp/.now");
  EXPECT_EQ("<null> untouched", told(time_getting));
}

TEST_F(ClockTest, time_getting_fails_when_its_file_is_locked) {
  fairlead_test::put_file("/tmp/.now", "");
  const misc_test::Holder holder("/tmp/.now");
  errno = 0;
  EXPECT_EQ("<null> untouched", told(time_getting));
  EXPECT_EQ(EBUSY, errno);
}

TEST_F(ClockTest, uptime_getting_and_livetime_getting_agree_with_the_kernel) {
  struct timespec before, after;
  clock_gettime(CLOCK_BOOTTIME, &before);
  const auto seconds = std::stol(told(uptime_getting));
  clock_gettime(CLOCK_BOOTTIME, &after);
  EXPECT_LE(before.tv_sec - 1, seconds);
  EXPECT_GE(after.tv_sec, seconds);
  EXPECT_TRUE(std::regex_match(told(livetime_getting), std::regex("\\d\\d:\\d\\d:\\d\\d:\\d+")));
}

TEST_F(ClockTest, uptime_getting_leaves_out_the_fraction) {
  with_uptime("90061.50 1.00\n", [] { EXPECT_EQ("90061", told(uptime_getting)); });
  with_uptime("59.99 1.00\n", [] { EXPECT_EQ("59", told(uptime_getting)); });
}

TEST_F(ClockTest, livetime_getting_splits_the_seconds) {
  const struct {
    const char* uptime;
    const char* expected;
  } cases[] = {
      {"0.00", "00:00:00:0"},     {"59.99", "00:00:59:0"},    {"60.00", "00:01:00:0"},
      {"3599.00", "00:59:59:0"},  {"3600.00", "01:00:00:0"},  {"86399.99", "23:59:59:0"},
      {"86400.00", "00:00:00:1"}, {"90061.50", "01:01:01:1"}, {"4294967295.00", "06:28:15:49710"}};
  for (const auto& [uptime, expected] : cases)
    with_uptime(std::string(uptime) + " 1.00\n",
                [expected = expected] { EXPECT_EQ(expected, told(livetime_getting)); });
}

TEST_F(ClockTest, uptime_getting_wraps_after_136_years) {
  with_uptime("4294967297.00 1.00\n", [] {
    EXPECT_EQ("1", told(uptime_getting));
    EXPECT_EQ("00:00:01:0", told(livetime_getting));
  });
}

TEST_F(ClockTest, uptime_count_gives_the_seconds_since_the_start) {
  with_uptime("90061.50 1.00\n", [] {
    EXPECT_EQ("0", told(uptime_count, "90061"));
    EXPECT_EQ("61", told(uptime_count, "90000"));
    EXPECT_EQ("90061", told(uptime_count, "0"));
    EXPECT_EQ("00:00:00:0", told(livetime_count, "90061"));
    EXPECT_EQ("00:01:01:0", told(livetime_count, "90000"));
    EXPECT_EQ("01:01:01:1", told(livetime_count, "0"));
  });
}

TEST_F(ClockTest, uptime_count_of_a_start_that_lies_ahead_wraps) {
  with_uptime("100.00 1.00\n", [] {
    EXPECT_EQ("4294967295", told(uptime_count, "101"));
    EXPECT_EQ("06:28:15:49710", told(livetime_count, "101"));
    EXPECT_EQ("101", told(uptime_count, "4294967295"));
  });
}

TEST_F(ClockTest, uptime_count_takes_text_that_is_no_number_for_0) {
  with_uptime("100.00 1.00\n", [] {
    EXPECT_EQ("100", told(uptime_count, ""));
    EXPECT_EQ("100", told(uptime_count, "soon"));
    EXPECT_EQ("90", told(uptime_count, "10.75"));
    EXPECT_EQ("90", told(uptime_count, "0010"));
    EXPECT_EQ("100", told(uptime_count, "0x10"));
  });
}

TEST_F(ClockTest, uptime_texts_are_cut_to_the_size) {
  with_uptime("90061.50 1.00\n", [] {
    char buffer[] = "------";
    EXPECT_EQ(buffer, uptime_getting(buffer, 4));
    EXPECT_STREQ("900", buffer);
    EXPECT_EQ('-', buffer[4]);
    EXPECT_EQ(buffer, livetime_getting(buffer, 6));
    EXPECT_STREQ("01:01", buffer);
    EXPECT_EQ(buffer, uptime_count("0", buffer, 1));
    EXPECT_STREQ("", buffer);
    EXPECT_EQ(buffer, livetime_count("0", buffer, 3));
    EXPECT_STREQ("01", buffer);
  });
}

void expect_no_uptime(int error) {
  for (const Form form : {uptime_getting, livetime_getting}) {
    errno = 0;
    EXPECT_EQ("<null> untouched", told(form));
    EXPECT_EQ(error, errno);
  }
  for (const FormSince form : {uptime_count, livetime_count}) {
    errno = 0;
    EXPECT_EQ("<null> untouched", told(form, "1"));
    EXPECT_EQ(error, errno);
  }
}

TEST_F(ClockTest, uptime_functions_fail_without_a_point_in_the_file) {
  with_uptime("90061 1\n", [] { expect_no_uptime(0); });
}

TEST_F(ClockTest, uptime_functions_fail_without_the_file) {
  with_uptime("", [] { expect_no_uptime(ENOENT); });
}

TEST_F(ClockTest, uptime_functions_read_63_characters) {
  const std::string many(62, '0');
  with_uptime(many + ".5\n", [] { EXPECT_EQ("0", told(uptime_getting)); });
  with_uptime(many + "0.5\n", [] { EXPECT_EQ("<null> untouched", told(uptime_getting)); });
}

TEST_F(ClockTest, clock_functions_refuse_null_and_sizes_below_1) {
  char buffer[] = "x";
  const auto refused = [](char* result) {
    EXPECT_EQ(nullptr, result);
    EXPECT_EQ(EINVAL, errno);
    errno = 0;
  };
  errno = 0;
  for (const Form form : {time_getting, uptime_getting, livetime_getting}) {
    refused(form(nullptr, 32));
    refused(form(buffer, 0));
    refused(form(buffer, -1));
  }
  for (const FormSince form : {uptime_count, livetime_count}) {
    refused(form(nullptr, buffer, 1));
    refused(form("0", nullptr, 32));
    refused(form("0", buffer, 0));
    refused(form("0", buffer, -1));
  }
  EXPECT_STREQ("x", buffer);
}

}  // namespace
