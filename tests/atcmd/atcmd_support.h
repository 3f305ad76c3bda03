// A pseudo-terminal as the line, and what the library logs about it.
#pragma once

#include <fcntl.h>
#include <pty.h>
#include <sys/ioctl.h>
#include <sys/ptrace.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <functional>
#include <memory>
#include <optional>
#include <regex>
#include <string>
#include <utility>
#include <vector>

#include "fairlead/atcmd.h"
#include "fairlead/log.h"
#include "misc/misc_support.h"
#include "support/capture.h"
#include "support/child.h"
#include "support/device_test.h"
#include "support/faults.h"
#include "support/traced.h"

namespace atcmd_test {

using fairlead_test::Call;
using fairlead_test::EachCall;
using fairlead_test::Fault;

constexpr int kLineFlags = O_RDWR | O_NOCTTY | O_NONBLOCK;

// Both ends of a line: the device, and the side where the modem would be. The line's settings are
// those of a terminal for people, so that there is something to change.
class Line {
 public:
  Line() {
    char name[64];
    EXPECT_EQ(0, openpty(&modem_, &keeper_, name, nullptr, nullptr));
    device_ = name;
    for (int fd : {modem_, keeper_}) fcntl(fd, F_SETFD, FD_CLOEXEC);
  }
  ~Line() {
    hang_up();
    close(keeper_);
  }
  Line(const Line&) = delete;
  Line& operator=(const Line&) = delete;

  const char* device() const { return device_.c_str(); }
  int modem() const { return modem_; }

  void say(const std::string& text) const {
    EXPECT_EQ(static_cast<ssize_t>(text.size()), write(modem_, text.data(), text.size()));
  }

  // What was sent to the modem and not yet heard.
  std::string heard() const {
    fcntl(modem_, F_SETFL, O_NONBLOCK);
    std::string text;
    char piece[4096];
    for (ssize_t got; (got = read(modem_, piece, sizeof piece)) > 0;)
      text.append(piece, static_cast<size_t>(got));
    fcntl(modem_, F_SETFL, 0);
    return text;
  }

  void hang_up() {
    if (modem_ >= 0) close(std::exchange(modem_, -1));
  }

  termios settings() const {
    termios settings = {};
    tcgetattr(keeper_, &settings);
    return settings;
  }
  void set(const termios& settings) const { tcsetattr(keeper_, TCSANOW, &settings); }

  // Bytes that came from the modem and were not yet read.
  int waiting() const {
    int count = 0;
    ioctl(keeper_, FIONREAD, &count);
    return count;
  }

 private:
  int modem_ = -1, keeper_ = -1;
  std::string device_;
};

inline bool operator==(const termios& a, const termios& b) {
  return a.c_iflag == b.c_iflag && a.c_oflag == b.c_oflag && a.c_cflag == b.c_cflag &&
         a.c_lflag == b.c_lflag && memcmp(a.c_cc, b.c_cc, sizeof a.c_cc) == 0;
}

// Messages, one line each, as "LINE: TEXT".
struct Logged {
  std::string errors;
  std::string debug;
};

inline std::string by_line(const std::string& console) {
  static const std::regex form("(?:error|debug): ([^\\n]*)\\{[0-9]+/atcmd/([0-9]+)\\}\\n");
  return std::regex_replace(console, form, "$2: $1\n");
}

// What an action logs. A message of several lines stays as it is.
template <class Action>
Logged logged(Action action) {
  GlogOpen("tester", LOG_MODE_CONSOLE | LOG_MODE_WHERE, 7);
  const fairlead_test::Captured shown = fairlead_test::capture(action);
  GlogOpen("tester", LOG_MODE_CONSOLE, 1);
  return {by_line(shown.err), by_line(shown.out)};
}

// What an action asks of the line, and which alarms it sets; it runs in a child. Tells what a
// pseudo-terminal, which has no modem lines and holds nothing back, does not show.
inline std::vector<std::string> steps_of(const std::function<void()>& action) {
  std::vector<std::string> steps;
  const auto word = [](const fairlead_test::CallMade& call, int argument, int at) {
    const uint64_t address = call.arguments[argument] + static_cast<uint64_t>(at) * sizeof(long);
    return ptrace(PTRACE_PEEKDATA, call.pid, address, nullptr);
  };
  const auto note_request = [&](const fairlead_test::CallMade& call) {
    const std::string bits = std::to_string(static_cast<int>(word(call, 2, 0)));
    switch (static_cast<unsigned>(call.arguments[1])) {
      case TIOCMBIC:
        return steps.push_back("drop " + bits);
      case TIOCMBIS:
        return steps.push_back("raise " + bits);
      case TCGETS:
        return;  // the C library adds some of its own
      case TCSETSF:
        return steps.push_back("set and flush");
      case TCSETS:
        return steps.push_back("set at once");
      case TCFLSH:
        return steps.push_back("flush " + std::to_string(call.arguments[2]));
      default:
        return steps.push_back("request " + std::to_string(call.arguments[1]));
    }
  };
  fairlead_test::run_traced({.watch =
                                 [&](const fairlead_test::CallMade& call) {
                                   if (call.number == SYS_ioctl) note_request(call);
                                   if (call.number != SYS_setitimer) return;
                                   const long seconds = word(call, 1, 2);
                                   if (seconds > 0)
                                     steps.push_back("alarm " + std::to_string(seconds));
                                 }},
                            action, [] { return 0; });
  return steps;
}

// The open waits for a second; not in a test, unless it is about that.
inline atcmd_t* open_at_once(const char* device, int speed = 0, atcmd_parser_t parser = nullptr,
                             atcmd_notify_t notify = nullptr, uint32_t flags = 0) {
  Fault no_sleep(Call::kSleep, {.error = EINTR});
  return atcmd_open(device, kLineFlags, speed, parser, notify, flags);
}

// Messages about errors only are kept out of the tests that are not about them.
class AtcmdTest : public fairlead_test::DeviceTest {
 protected:
  void SetUp() override {
    DeviceTest::SetUp();
    GlogOpen("tester", LOG_MODE_CONSOLE, 1);
  }
  void TearDown() override {
    GlogClose();
    DeviceTest::TearDown();
  }
};

// A device that is open for the length of a test.
class OpenDeviceTest : public AtcmdTest {
 protected:
  void SetUp() override {
    AtcmdTest::SetUp();
    line_ = std::make_unique<Line>();
    atcmd_ = open_at_once(line_->device());
    ASSERT_NE(nullptr, atcmd_);
  }
  void TearDown() override {
    if (atcmd_) atcmd_close(atcmd_);
    line_.reset();
    AtcmdTest::TearDown();
  }

  std::string last() const { return atcmd_lastack(atcmd_); }
  std::string buffer() const { return atcmd_->receive_buffer; }

  std::unique_ptr<Line> line_;
  atcmd_t* atcmd_ = nullptr;
};

// The caller's own handlers for every signal an operation catches, until the end of the block.
class CallersHandlers {
 public:
  bool in_force() const {
    return hangup_.in_force() && alarm_.in_force() && end_.in_force() && interrupt_.in_force() &&
           quit_.in_force() && pipe_.in_force();
  }
  static int calls() { return misc_test::CallersHandler::calls; }

 private:
  misc_test::CallersHandler hangup_{SIGHUP}, alarm_{SIGALRM}, end_{SIGTERM}, interrupt_{SIGINT},
      quit_{SIGQUIT}, pipe_{SIGPIPE};
};

inline std::vector<int> blocked_of(std::initializer_list<int> numbers) {
  std::vector<int> blocked;
  for (int number : numbers)
    if (misc_test::blocked_now(number)) blocked.push_back(number);
  return blocked;
}

// Returns when a process sleeps in a system call inside an operation, which is told by its mask.
inline bool wait_until_held_up(pid_t pid) {
  const std::string path = "/proc/" + std::to_string(pid) + "/status";
  constexpr uint64_t kOpen = misc_test::bit(SIGHUP), kBlocked = misc_test::bit(SIGUSR1);
  for (int round = 0; round < 20000; ++round) {
    std::string state;
    std::ifstream status(path);
    while (std::getline(status, state) && state.rfind("State:", 0) != 0) continue;
    const bool sleeping = state.find('S', 6) != std::string::npos;
    if (sleeping && (misc_test::signal_set(path, "SigBlk") & (kOpen | kBlocked)) == kBlocked)
      return true;
    usleep(1000);
  }
  return false;
}

}  // namespace atcmd_test
