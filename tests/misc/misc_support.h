// Other processes that hold locks, and the signal state of this one.
#pragma once

#include <fcntl.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <initializer_list>
#include <string>
#include <vector>

#include "support/child.h"
#include "support/device_test.h"

namespace misc_test {

inline bool take_lock(int fd, short type) {
  struct flock lock = {};
  lock.l_type = type;
  return fcntl(fd, F_SETLK, &lock) == 0;
}

// Another process that holds a lock on a whole file until it is told to leave.
class Holder {
 public:
  explicit Holder(const std::string& path, short type = F_WRLCK)
      : child_([this, path, type] {
          const int fd = open(path.c_str(), O_RDWR | O_CLOEXEC);
          EXPECT_TRUE(take_lock(fd, type)) << path;
          held_.open();
          leave_.wait(60000);
          return 0;
        }) {
    EXPECT_TRUE(held_.wait());
  }

  pid_t pid() const { return child_.pid(); }
  void leave() { leave_.open(); }

 private:
  fairlead_test::Gate held_, leave_;
  fairlead_test::Child child_;
};

// Whether another process could lock the file now.
inline bool lockable_elsewhere(const std::string& path, short type = F_WRLCK) {
  const auto ended = fairlead_test::run_child([&] {
    const int fd = open(path.c_str(), O_RDWR | O_CLOEXEC);
    return take_lock(fd, type) ? 0 : 1;
  });
  return ended.status == 0;
}

// Returns when the process waits for a record lock, which the kernel tells by a line such as
// "1: -> POSIX  ADVISORY  WRITE 17 ...".
inline bool wait_until_blocked(pid_t pid) {
  const std::string owner = " " + std::to_string(pid) + " ";
  for (int round = 0; round < 20000; ++round) {
    std::ifstream locks("/proc/locks");
    for (std::string line; std::getline(locks, line);)
      if (line.find("->") != std::string::npos && line.find(owner) != std::string::npos)
        return true;
    usleep(1000);
  }
  return false;
}

class Stopwatch {
 public:
  double seconds() const {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin_).count();
  }

 private:
  std::chrono::steady_clock::time_point begin_ = std::chrono::steady_clock::now();
};

// A plain handler until the end of the block; the former action comes back whole.
class PlainHandler {
 public:
  PlainHandler(int number, void (*handler)(int)) : number_(number) {
    struct sigaction action = {};
    action.sa_handler = handler;
    sigaction(number_, &action, &former_);
  }
  ~PlainHandler() { sigaction(number_, &former_, nullptr); }
  PlainHandler(const PlainHandler&) = delete;
  PlainHandler& operator=(const PlainHandler&) = delete;

  void (*in_force() const)(int) {
    struct sigaction now = {};
    sigaction(number_, nullptr, &now);
    return now.sa_handler;
  }

 private:
  int number_;
  struct sigaction former_ = {};
};

// A handler of the caller's with everything a caller can ask for; the former one comes back.
class CallersHandler {
 public:
  explicit CallersHandler(int number, int flags = SA_SIGINFO | SA_RESTART) : number_(number) {
    calls = 0;
    action_.sa_sigaction = [](int, siginfo_t*, void*) { calls = calls + 1; };
    action_.sa_flags = flags;
    sigaddset(&action_.sa_mask, SIGUSR2);
    sigaction(number_, &action_, &former_);
  }
  ~CallersHandler() { sigaction(number_, &former_, nullptr); }
  CallersHandler(const CallersHandler&) = delete;
  CallersHandler& operator=(const CallersHandler&) = delete;

  bool in_force() const {
    struct sigaction now = {};
    sigaction(number_, nullptr, &now);
    constexpr int kAsked =
        static_cast<int>(SA_SIGINFO | SA_RESTART | SA_NODEFER | SA_RESETHAND | SA_NOCLDSTOP);
    return now.sa_sigaction == action_.sa_sigaction &&
           (now.sa_flags & kAsked) == (action_.sa_flags & kAsked) &&
           sigismember(&now.sa_mask, SIGUSR2) == 1 && sigismember(&now.sa_mask, SIGUSR1) == 0;
  }

  static inline volatile sig_atomic_t calls = 0;

 private:
  int number_;
  struct sigaction action_ = {};
  struct sigaction former_ = {};
};

// Blocks signals until the end of the block.
class Blocked {
 public:
  explicit Blocked(std::initializer_list<int> numbers) {
    sigset_t set;
    sigemptyset(&set);
    for (int number : numbers) sigaddset(&set, number);
    sigprocmask(SIG_BLOCK, &set, &former_);
  }
  ~Blocked() { sigprocmask(SIG_SETMASK, &former_, nullptr); }
  Blocked(const Blocked&) = delete;
  Blocked& operator=(const Blocked&) = delete;

 private:
  sigset_t former_;
};

inline bool blocked_now(int number) {
  sigset_t set;
  sigprocmask(SIG_SETMASK, nullptr, &set);
  return sigismember(&set, number) == 1;
}

inline bool pending_now(int number) {
  sigset_t set;
  sigpending(&set);
  return sigismember(&set, number) == 1;
}

// The caller's own alarm, off at the end of the block.
class CallersAlarm {
 public:
  explicit CallersAlarm(itimerval timer) { setitimer(ITIMER_REAL, &timer, nullptr); }
  ~CallersAlarm() {
    const itimerval off = {};
    setitimer(ITIMER_REAL, &off, nullptr);
  }
  CallersAlarm(const CallersAlarm&) = delete;
  CallersAlarm& operator=(const CallersAlarm&) = delete;

  static itimerval left() {
    itimerval timer = {};
    getitimer(ITIMER_REAL, &timer);
    return timer;
  }
};

inline bool becomes(const volatile sig_atomic_t& value, int wanted) {
  for (int round = 0; round < 20000 && value != wanted; ++round) usleep(1000);
  return value == wanted;
}

// A set of signals out of a process' status file. It has the numbers of the machine's kernel, which
// under emulation are those of the target for the classic ones only, such as SIGHUP or SIGALRM.
inline uint64_t signal_set(const std::string& path, const std::string& name) {
  std::ifstream status(path);
  for (std::string line; std::getline(status, line);)
    if (line.rfind(name + ":", 0) == 0)
      return std::stoull(line.substr(name.size() + 1), nullptr, 16);
  ADD_FAILURE() << "no " << name << " in " << path;
  return 0;
}

constexpr uint64_t bit(int signal_number) { return uint64_t{1} << (signal_number - 1); }

// From here on, these system calls end the process, or fail with an errno. False where the kernel
// has no such filter.
inline bool forbid(std::initializer_list<unsigned> calls, int error = 0) {
  std::vector<sock_filter> filter = {
      BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr))};
  for (unsigned call : calls) {
    filter.push_back(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, call, 0, 1));
    filter.push_back(
        BPF_STMT(BPF_RET | BPF_K, error ? SECCOMP_RET_ERRNO | static_cast<unsigned>(error)
                                        : SECCOMP_RET_KILL_PROCESS));
  }
  filter.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW));
  const sock_fprog program = {static_cast<unsigned short>(filter.size()), filter.data()};
  return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
         prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0;
}

}  // namespace misc_test
