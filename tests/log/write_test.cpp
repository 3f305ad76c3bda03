// One message: filtered by its severity, and written as a line to the console and to syslog.
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>

#include "log_support.h"
#include "support/faults.h"
#include "support/syslog.h"

namespace {

using namespace fairlead_test;
using std::string;

constexpr uint32_t kEverything = LOG_MODE_CONSOLE | LOG_MODE_SYSLOG | LOG_MODE_WHERE;
constexpr uint32_t kNoMemory = 57;
constexpr uint32_t kNotice = 1542;

class LogWriteTest : public LogTest {
 protected:
  void SetUp() override {
    LogTest::SetUp();
    GlogOpen("tester", LOG_MODE_SYSLOG, 7);
  }
};

// ---- Console ----

TEST_F(LogWriteTest, each_level_has_its_name_and_stream) {
  const char* names[] = {"unknown", "emerg", "alert", "error", "warn", "notice"};
  for (uint32_t level = 0; level < 6; ++level) {
    const Captured shown = print(level, "text");
    EXPECT_EQ(string(names[level]) + ": text\n", shown.err);
    EXPECT_EQ("", shown.out);
  }
  EXPECT_EQ("info: text\n", print(6, "text").out);
  EXPECT_EQ("debug: text\n", print(7, "text").out);
  EXPECT_EQ("", print(6, "text").err + print(7, "text").err);
}

TEST_F(LogWriteTest, where_appends_process_file_and_line) {
  EXPECT_EQ("error: text" + place() + "\n", print(3 | LOG_MODE_WHERE, "text").err);
  EXPECT_EQ("info: text" + place() + "\n", print(6 | LOG_MODE_WHERE, "text").out);
}

TEST_F(LogWriteTest, errno_is_appended_and_goes_to_standard_error) {
  for (uint32_t level : {3u, 6u, 7u}) {
    const char* name = level == 3 ? "error" : level == 6 ? "info" : "debug";
    errno = ENOENT;
    Captured shown = print(level | LOG_ERRNO, "text");
    EXPECT_EQ(string(name) + ": text(err:2/No such file or directory)\n", shown.err);
    EXPECT_EQ("", shown.out);
    errno = ENOENT;
    shown = print(level | LOG_ERRNO | LOG_MODE_WHERE, "text");
    EXPECT_EQ(string(name) + ": text(err:2/No such file or directory)" + place() + "\n", shown.err);
  }
}

TEST_F(LogWriteTest, an_unknown_errno_has_a_text_too) {
  errno = 4000;
  EXPECT_EQ("error: text(err:4000/Unknown error 4000)\n", print(3 | LOG_ERRNO, "text").err);
}

TEST_F(LogWriteTest, no_memory_writes_a_line_before) {
  EXPECT_EQ("emerg: out of memory\nemerg: text\n", print(1 | LOG_NOMEM, "text").err);
  EXPECT_EQ("emerg: out of memory" + place() + "\nemerg: text" + place() + "\n",
            print(1 | LOG_NOMEM | LOG_MODE_WHERE, "text").err);
}

TEST_F(LogWriteTest, the_line_of_no_memory_goes_to_standard_error_at_every_level) {
  const Captured shown = print(6 | LOG_NOMEM, "text");
  EXPECT_EQ("info: out of memory\n", shown.err);
  EXPECT_EQ("info: text\n", shown.out);
}

TEST_F(LogWriteTest, bits_6_and_7_are_ignored) {
  EXPECT_EQ("error: text\n", print(3 | 0xC0, "text").err);
  GlogOpen("tester", LOG_MODE_CONSOLE, 7);
  EXPECT_EQ("error: text\n", capture([] { LogWrite(3 | 0xC0, "source", 1, "text"); }).err)
      << "nor are they a mode";
}

TEST_F(LogWriteTest, bits_from_8_up_are_the_whole_mode_of_the_message) {
  Syslog daemon;
  GlogOpen("tester", kEverything, 7);
  for (uint32_t mode : {0x100u, 0x800u, 0x80000000u, LOG_MODE_WHERE}) {
    const Captured shown = capture([mode] { LogWrite(3 | mode, "source", 12, "unheard"); });
    EXPECT_EQ("", shown.err + shown.out) << mode;
  }
  LogWrite(3 | LOG_MODE_SYSLOG, "source", 12, "the end");
  EXPECT_TRUE(ends_with(daemon.wait_for("the end"), " tester: the end"));
  EXPECT_EQ(string::npos, daemon.text().find("unheard"));
}

TEST_F(LogWriteTest, arguments_are_formatted_once) {
  EXPECT_EQ("error: %s%n%%d\n", print(3, "%s%n%%d").err);
  const Captured shown =
      capture([] { LogWrite(3 | LOG_MODE_CONSOLE, "source", 1, "%d of %s%%", 7, "ten"); });
  EXPECT_EQ("error: 7 of ten%\n", shown.err);
}

TEST_F(LogWriteTest, the_format_sees_the_errno_of_the_caller) {
  const char* format = "%d %m";
  EXPECT_EQ("error: 1 Permission denied\n", capture([&] {
                                              errno = EACCES;
                                              LogWrite(3 | LOG_MODE_CONSOLE, "source", 1, format,
                                                       1);
                                            }).err);
}

TEST_F(LogWriteTest, a_long_message_is_cut_at_4094_characters) {
  EXPECT_EQ("error: " + string(4094, 'x') + "\n", print(3, string(4094, 'x').c_str()).err);
  EXPECT_EQ("error: " + string(4094, 'x') + place() + "\n",
            print(3 | LOG_MODE_WHERE, string(9000, 'x').c_str()).err);
}

TEST_F(LogWriteTest, a_missing_file_or_format_counts_as_empty) {
  const char* none = nullptr;
  EXPECT_EQ("error: \n", capture([&] { LogWrite(3 | LOG_MODE_CONSOLE, "f", 1, none, 0); }).err);
  EXPECT_EQ("error: x{" + std::to_string(getpid()) + "//-1}\n",
            capture([&] { LogWrite(3 | LOG_MODE_CONSOLE | LOG_MODE_WHERE, none, -1, "x"); }).err);
}

TEST_F(LogWriteTest, a_long_file_name_does_not_cost_the_line_number) {
  const string file(500, 'f');
  const Captured shown =
      capture([&] { LogWrite(3 | LOG_MODE_CONSOLE | LOG_MODE_WHERE, file.c_str(), 77, "text"); });
  EXPECT_TRUE(ends_with(shown.err, "/" + string(200, 'f') + "/77}\n")) << shown.err;
}

TEST_F(LogWriteTest, console_lines_are_out_at_once) {
  const Ended child = run_child([] {
    LogWrite(6 | LOG_MODE_CONSOLE, "source", 1, "text");
    _exit(0);
  });
  EXPECT_EQ("info: text\n", child.out);
}

// ---- Syslog ----

TEST_F(LogWriteTest, each_level_has_its_syslog_priority) {
  Syslog daemon;
  const char* priorities[] = {"debug", "emerg", "alert", "err", "warn", "notice", "info", "debug"};
  for (uint32_t level = 0; level < 8; ++level) {
    const string text = "level" + std::to_string(level);
    LogWrite(level, "source", 12, "%s", text.c_str());
    const string line = daemon.wait_for(text);
    EXPECT_TRUE(ends_with(line, string(" daemon.") + priorities[level] + " tester: " + text))
        << line;
  }
}

TEST_F(LogWriteTest, syslog_lines_carry_errno_and_place) {
  Syslog daemon;
  const string error = "(err:13/Permission denied)";
  const auto line = [&](uint32_t word, const char* text) {
    errno = EACCES;
    LogWrite(word | LOG_MODE_SYSLOG, "source", 12, "%s", text);
    return daemon.wait_for(text);
  };
  EXPECT_TRUE(ends_with(line(4, "one"), " daemon.warn tester: one"));
  EXPECT_TRUE(ends_with(line(4 | LOG_MODE_WHERE, "two"), " daemon.warn tester: two" + place()));
  EXPECT_TRUE(ends_with(line(12, "three"), " daemon.warn tester: three" + error));
  EXPECT_TRUE(
      ends_with(line(12 | LOG_MODE_WHERE, "four"), " daemon.warn tester: four" + error + place()));
}

TEST_F(LogWriteTest, no_memory_is_an_alert_in_syslog) {
  Syslog daemon;
  LogWrite(4 | LOG_NOMEM | LOG_MODE_SYSLOG, "source", 12, "first");
  EXPECT_TRUE(ends_with(daemon.wait_for("out of memory"), " daemon.alert tester: out of memory"));
  EXPECT_TRUE(ends_with(daemon.wait_for("first"), " daemon.warn tester: first"));

  LogWrite(4 | LOG_NOMEM | LOG_MODE_SYSLOG | LOG_MODE_WHERE, "source", 12, "second");
  EXPECT_TRUE(ends_with(daemon.wait_for("out of memory{"),
                        " daemon.alert tester: out of memory" + place()));
  EXPECT_TRUE(ends_with(daemon.wait_for("second"), " daemon.warn tester: second" + place()));
}

TEST_F(LogWriteTest, a_message_is_no_format_for_syslog) {
  Syslog daemon;
  LogWrite(3, "source", 12, "%s", "odd %s%n%d text");
  EXPECT_TRUE(ends_with(daemon.wait_for("odd"), "odd %s%n%d text"));
}

TEST_F(LogWriteTest, both_outputs_are_written_once_each) {
  Syslog daemon;
  const Captured shown = capture([] { LogWrite(3 | kEverything, "source", 12, "everywhere"); });
  EXPECT_EQ("error: everywhere" + place() + "\n", shown.err);
  const string line = daemon.wait_for("everywhere");
  EXPECT_TRUE(ends_with(line, " daemon.err tester: everywhere" + place())) << line;
  EXPECT_EQ(line + "\n", daemon.text().substr(daemon.text().find(line)));
}

TEST_F(LogWriteTest, a_notice_reaches_both_outputs_whatever_the_mode) {
  Syslog daemon;
  GlogOpen("tester", LOG_MODE_CONSOLE | LOG_MODE_WHERE, 6);
  const Captured shown = capture([] { LogWrite(kNotice, "config", 12, "installed"); });
  EXPECT_EQ("info: installed\n", shown.out);
  EXPECT_TRUE(ends_with(daemon.wait_for("installed"), ".info tester: installed"));

  GlogOpen("tester", LOG_MODE_CONSOLE, 5);
  EXPECT_EQ("", capture([] { LogWrite(kNotice, "config", 12, "removed"); }).out);
}

TEST_F(LogWriteTest, without_a_daemon_nothing_happens) {
  errno = EACCES;
  LogWrite(3, "source", 12, "nobody listens");
  EXPECT_EQ(EACCES, errno);
}

// ---- The filter ----

TEST_F(LogWriteTest, a_level_above_the_threshold_is_not_written) {
  for (uint32_t threshold = 1; threshold <= 7; ++threshold) {
    GlogOpen("tester", LOG_MODE_CONSOLE, threshold);
    for (uint32_t level = 0; level <= 7; ++level) {
      const Captured shown = print(level, "text");
      EXPECT_EQ(level <= threshold, shown.out + shown.err != "") << level << " " << threshold;
    }
  }
}

TEST_F(LogWriteTest, a_filtered_message_does_not_end_the_process) {
  GlogOpen("tester", LOG_MODE_CONSOLE, 3);
  errno = EACCES;
  EXPECT_EQ("", print(4 | LOG_EXIT | LOG_NOMEM | LOG_ERRNO, "text").err);
  EXPECT_EQ(EACCES, errno);
}

// In this mode of the kernel any system call but read, write and exit ends the process.
TEST_F(LogWriteTest, a_filtered_message_makes_no_system_call_and_allocates_nothing) {
  const Ended child = run_child([] {
    store_setting("log_mode", LOG_MODE_CONSOLE);
    store_setting("log_level", 6);
    GlogClose();
    LogWrite(7, "source", 1, "the references are known from here on");
    const Fault counter(Call::kMalloc, {.nth = 0});
    if (prctl(PR_SET_SECCOMP, SECCOMP_MODE_STRICT) != 0) _exit(2);
    for (int i = 0; i < 1000; ++i) LogWrite(7 | LOG_ERRNO, "source", i, "filtered %d", i);
    syscall(SYS_exit, counter.calls() == 0 ? 0 : 1);
  });
  EXPECT_EQ(0, child.signal);
  EXPECT_EQ(0, child.status);
}

TEST_F(LogWriteTest, a_written_message_allocates_nothing) {
  GlogOpen("tester", LOG_MODE_CONSOLE | LOG_MODE_WHERE, 7);
  print(6, "the stream has its buffer from here on");
  int allocations = -1;
  capture([&] {
    const Fault counter(Call::kMalloc, {.nth = 0});
    for (int error : {0, ENOENT, 4000}) {
      errno = error;
      LogWrite(3 | LOG_ERRNO, "source", 1, "%s", "text");
      LogWrite(6, "source", 1, "%s", "text");
    }
    allocations = counter.calls();
  });
  EXPECT_EQ(0, allocations);
}

// ---- errno and the end of the process ----

TEST_F(LogWriteTest, errno_stays) {
  Syslog daemon;
  for (uint32_t mode : {LOG_MODE_SYSLOG, LOG_MODE_CONSOLE, kEverything})
    for (uint32_t word : {3u, 6u, 11u, 7u}) {
      int after = 0;
      capture([&] {
        errno = ENOTTY;
        LogWrite(word | mode, "source", 12, "text");
        after = errno;
      });
      EXPECT_EQ(ENOTTY, after) << word << " " << mode;
    }
}

TEST_F(LogWriteTest, no_memory_sets_errno_on_the_console_only) {
  for (auto [mode, expected] : {std::pair{LOG_MODE_CONSOLE, ENOMEM},
                                {LOG_MODE_CONSOLE | LOG_MODE_SYSLOG, ENOMEM},
                                {LOG_MODE_SYSLOG, ENOTTY}}) {
    int after = 0;
    capture([&, word = mode | 1 | LOG_NOMEM] {
      errno = ENOTTY;
      LogWrite(word, "source", 12, "text");
      after = errno;
    });
    EXPECT_EQ(expected, after) << mode;
  }
}

TEST_F(LogWriteTest, exit_ends_the_process_with_status_255) {
  for (uint32_t mode : {LOG_MODE_CONSOLE, LOG_MODE_SYSLOG, 0x100u})
    EXPECT_EQ(255, run_child([mode] { LogWrite(LOG_EXIT | 3 | mode, "s", 1, "end"); }).status);
}

TEST_F(LogWriteTest, exit_runs_what_the_program_wanted_to_run_at_its_end) {
  const Ended child = run_child([] {
    atexit([] { put_file("/tmp/farewell", "said"); });
    LogWrite(LOG_EXIT | 3 | LOG_MODE_CONSOLE, "source", 1, "end");
  });
  EXPECT_EQ(255, child.status);
  EXPECT_EQ("said", file_content("/tmp/farewell"));
}

TEST_F(LogWriteTest, lost_memory_is_told_twice_and_ends_the_process) {
  GlogOpen("tester", LOG_MODE_CONSOLE | LOG_MODE_WHERE, 7);
  Child child([]() -> int {
    errno = EAGAIN;
    LogWrite(kNoMemory, "adp", 439, "out of memory");
    return 1;
  });
  const string place = "{" + std::to_string(child.pid()) + "/adp/439}\n";
  const Ended ended = child.wait();
  EXPECT_EQ(255, ended.status);
  EXPECT_EQ("emerg: out of memory" + place +
                "emerg: out of memory(err:11/Resource temporarily unavailable)" + place,
            ended.err);
  EXPECT_EQ("", ended.out);
}

TEST_F(LogWriteTest, a_format_that_is_refused_gives_an_empty_message) {
  const wchar_t unspeakable[] = {static_cast<wchar_t>(0x110000), 0};
  const Captured shown =
      capture([&] { LogWrite(3 | LOG_MODE_CONSOLE, "test", __LINE__, "before %ls", unspeakable); });
  EXPECT_EQ("error: \n", shown.err);
}

}  // namespace
