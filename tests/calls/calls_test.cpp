// The system calls of each kind of request, compared with the table that is kept beside this test.
#include <gtest/gtest.h>
#include <linux/close_range.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <fstream>
#include <map>
#include <string>
#include <vector>

#include "calls/operations.h"
#include "support/device_test.h"
#include "support/traced.h"

namespace {

using namespace fairlead_test;

constexpr char kTrace[] = "/tmp/trace";
constexpr char kTool[] = "he, read of a pure object";
constexpr size_t kRoomOnTheHeap = 100000;  // less than what the allocator gives back to the system

std::string name_of(long number) {
  static const std::map<long, const char*> names = {
#define NAMED(call) {SYS_##call, #call}
      NAMED(access),         NAMED(brk),          NAMED(clone),
      NAMED(close),          NAMED(connect),      NAMED(dup2),
      NAMED(execve),         NAMED(fchmod),       NAMED(fchown),
      NAMED(fcntl),          NAMED(flock),        NAMED(fstat),
      NAMED(fsync),          NAMED(getpid),       NAMED(lstat),
      NAMED(mkdir),          NAMED(mmap),         NAMED(munmap),
      NAMED(open),           NAMED(openat),       NAMED(ppoll),
      NAMED(prctl),          NAMED(read),         NAMED(readlink),
      NAMED(rename),         NAMED(rt_sigaction), NAMED(rt_sigpending),
      NAMED(rt_sigprocmask), NAMED(sendto),       NAMED(set_robust_list),
      NAMED(socket),         NAMED(socketpair),   NAMED(stat),
      NAMED(statx),          NAMED(unlink),       NAMED(write),
#ifdef SYS_newfstatat
      NAMED(newfstatat),
#endif
#ifdef SYS_fcntl64
      NAMED(fcntl64),
#endif
#undef NAMED
  };
  const auto found = names.find(number);
  return found == names.end() ? "call " + std::to_string(number) : found->second;
}

// What one action calls, its children included, up to the start of another program. Left out is
// what depends on which of two processes is faster: how a wait is interrupted and how a child's end
// is taken.
class Counted {
 public:
  explicit Counted(bool (*act)()) {
    const TracePlan plan = {.watch = [this](const CallMade& call) { note(call); }};
    const Traced seen = run_traced(
        plan, [act, this] { marked([&] { done_ = act(); }); }, [this] { return done_ ? 0 : 1; },
        [act] {
          // A script's answer goes to the first number that no inherited descriptor has.
          close_range(STDERR_FILENO + 1, UINT_MAX, CLOSE_RANGE_CLOEXEC);
          act();  // what only the first call of a process does is not counted
          free(malloc(kRoomOnTheHeap));
        });
    done_ = seen.ended.status == 0;
  }

  bool done() const { return done_; }
  const std::vector<std::string>& names() const { return names_; }

 private:
  template <class Action>
  static void marked(Action action) {
    syscall(SYS_getppid);
    action();
    syscall(SYS_getppid);
  }

  void note(const CallMade& call) {
    if (call.number == SYS_getppid) {
      counting_ = !counting_;
    } else if (counting_ && !is_of_the_race(call)) {
      names_.push_back(name_of(call.number));
    }
  }

  static bool is_of_the_race(const CallMade& call) {
    constexpr int64_t kFirstRestart = 512, kLastRestart = 516;  // how the kernel says EINTR inside
    const bool interrupted =
        call.result == -EINTR || (call.result <= -kFirstRestart && call.result >= -kLastRestart);
#ifdef SYS_sigreturn
    if (call.number == SYS_sigreturn) return true;
#endif
    return interrupted || call.number == SYS_rt_sigreturn || call.number == SYS_wait4;
  }

  bool counting_ = false;
  bool done_ = false;
  std::vector<std::string> names_;
};

// The lines "NAME  NUMBER" of the table.
std::map<std::string, int> read_table() {
  std::map<std::string, int> table;
  std::ifstream file(COUNTS_FILE);
  for (std::string line; std::getline(file, line);) {
    if (line.empty() || line[0] == '#') continue;
    const size_t end = line.find("  "), number = line.find_last_of(' ');
    table[line.substr(0, end)] = atoi(line.c_str() + number);
  }
  return table;
}

void expect_as_in_the_table(const std::string& name, const std::vector<std::string>& calls) {
  const auto table = read_table();
  const auto row = table.find(name);
  const int allowed = row == table.end() ? -1 : row->second;
  const int number = static_cast<int>(calls.size());
  std::string list = " They are\n";
  for (const std::string& call : calls) list += "  " + call + "\n";
  EXPECT_GE(allowed, number)
      << name
      << ": more system calls than in tests/calls/counts. Every request of a device pays for "
      << "them: do without, or put the new number there and the reason into the commit." << list;
  EXPECT_LE(allowed, number) << name << ": fewer system calls than in tests/calls/counts. Put the "
                             << "new number there, so that it stays." << list;
}

class CallsTest : public DeviceTest, public testing::WithParamInterface<size_t> {
 protected:
  void SetUp() override {
    DeviceTest::SetUp();
#ifdef FAIRLEAD_SANITIZED
    GTEST_SKIP() << "the sanitizers make system calls of their own";
#endif
#ifdef FAIRLEAD_COVERAGE
    GTEST_SKIP() << "children save their counts by system calls of their own";
#endif
    if (!can_trace()) GTEST_SKIP() << "processes can't be traced here";
    arrange_device();
  }
};

using RequestTest = CallsTest;

TEST_P(RequestTest, makes_the_system_calls_of_the_table) {
  const Operation& operation = operations()[GetParam()];
  const Counted counted(operation.act);
  EXPECT_TRUE(counted.done()) << operation.name;
  expect_as_in_the_table(operation.name, counted.names());
}

std::string test_name(const testing::TestParamInfo<size_t>& info) {
  std::string name = operations()[info.param].name;
  name.erase(std::remove(name.begin(), name.end(), ','), name.end());
  std::replace(name.begin(), name.end(), ' ', '_');
  return name;
}

INSTANTIATE_TEST_SUITE_P(every, RequestTest, testing::Range<size_t>(0, operations().size()),
                         test_name);

// How much the first memory of a process costs is the C library's business.
bool is_of_the_allocator(const std::string& call) {
  return call.rfind("brk(", 0) == 0 || call.rfind("getrandom(", 0) == 0;
}

// The system calls that a program makes once the loader is done with it, a line each; empty when it
// cannot be traced.
std::vector<std::string> traced_program(const std::string& command) {
  const std::string line = std::string("strace -o ") + kTrace + " -E LD_PRELOAD=" + START_MARK +
                           " " + command + " >/tmp/answer";
  std::vector<std::string> calls;
  if (system(line.c_str()) != 0) return calls;
  std::ifstream trace(kTrace);
  bool started = false;
  for (std::string call; std::getline(trace, call);) {
    const bool is_call = call[0] != '+' && call[0] != '-';  // no signal and not the end
    if (started && is_call && !is_of_the_allocator(call)) calls.push_back(call);
    started = started || call.rfind("getppid(", 0) == 0;
  }
  return calls;
}

TEST_F(CallsTest, of_the_tool_are_those_of_the_table) {
  if (system("strace -o /dev/null true 2>/dev/null") != 0) GTEST_SKIP() << "strace is missing";
  const std::vector<std::string> calls = traced_program(HE_PROGRAM " wan:dns/first");
  EXPECT_EQ("9.9.9.9\n", file_content("/tmp/answer"));
  expect_as_in_the_table(kTool, calls);
}

TEST(CallsTableTest, has_a_line_for_each_operation_and_no_other) {
  std::map<std::string, int> table = read_table();
  EXPECT_EQ(1u, table.erase(kTool));
  for (const Operation& operation : operations()) EXPECT_EQ(1u, table.erase(operation.name));
  for (const auto& [name, number] : table) ADD_FAILURE() << "nothing counts \"" << name << "\"";
}

}  // namespace
