// Scopes for what a timed wait changes in the process: handler, signal mask, alarm. Each puts back
// what it found.
#pragma once

#include <sys/time.h>

#include <csignal>
#include <ctime>

#include "base/errno_keeper.h"
#include "fairlead/misc/process.h"

namespace fairlead {

// Installs a handler by `signal_register` and puts the former action back whole, its flags
// included.
class HandlerScope {
 public:
  HandlerScope(int signal_number, signal_function_t handler) : signal_number_(signal_number) {
    sigaction(signal_number_, nullptr, &former_);
    signal_register(signal_number_, handler);
  }
  ~HandlerScope() {
    ErrnoKeeper keep;
    put_back();
  }
  HandlerScope(const HandlerScope&) = delete;
  HandlerScope& operator=(const HandlerScope&) = delete;

  void put_back() const { sigaction(signal_number_, &former_, nullptr); }

 private:
  int signal_number_;
  struct sigaction former_;
};

// Remembers the signal mask and puts it back.
class MaskScope {
 public:
  MaskScope() { sigprocmask(SIG_SETMASK, nullptr, &former_); }
  ~MaskScope() {
    ErrnoKeeper keep;
    sigprocmask(SIG_SETMASK, &former_, nullptr);
  }
  MaskScope(const MaskScope&) = delete;
  MaskScope& operator=(const MaskScope&) = delete;

  const sigset_t& former() const { return former_; }

 private:
  sigset_t former_;
};

// Arms SIGALRM after `seconds`, and re-arms what remains of the caller's own timer at the end.
class AlarmScope {
 public:
  explicit AlarmScope(int seconds) {
    clock_gettime(CLOCK_MONOTONIC, &begin_);
    // Repeated after the first time: a signal that comes just before the blocking call would be
    // lost.
    const itimerval timer = {{0, kRepeatMicroseconds}, {seconds, 0}};
    setitimer(ITIMER_REAL, &timer, &former_);
  }
  ~AlarmScope() {
    ErrnoKeeper keep;
    itimerval rest = former_;
    if (armed(rest)) rest.it_value = remaining(former_.it_value);
    setitimer(ITIMER_REAL, &rest, nullptr);
  }
  AlarmScope(const AlarmScope&) = delete;
  AlarmScope& operator=(const AlarmScope&) = delete;

 private:
  static constexpr suseconds_t kRepeatMicroseconds = 20000;

  static bool armed(const itimerval& timer) {
    return timer.it_value.tv_sec != 0 || timer.it_value.tv_usec != 0;
  }

  // At least a microsecond: a timer that ran out meanwhile fires at once, it is not lost.
  timeval remaining(const timeval& wanted) const {
    timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    const int64_t passed =
        (now.tv_sec - begin_.tv_sec) * 1000000LL + (now.tv_nsec - begin_.tv_nsec) / 1000;
    const int64_t rest = wanted.tv_sec * 1000000LL + wanted.tv_usec - passed;
    if (rest <= 0) return {0, 1};
    return {static_cast<time_t>(rest / 1000000), static_cast<suseconds_t>(rest % 1000000)};
  }

  timespec begin_;
  itimerval former_;
};

}  // namespace fairlead
