// The alarm of a timed wait, and the caller's own one, which stands back meanwhile.
#pragma once

#include <sys/time.h>
#include <unistd.h>

#include <csignal>
#include <ctime>

#include "base/errno_keeper.h"

namespace fairlead {

// Takes the caller's timer off and puts it back with what remains. Made before handler and mask
// change and undone after them, so that the caller's alarm never meets a handler of ours.
class AlarmPause {
 public:
  AlarmPause() {
    const itimerval off = {};
    setitimer(ITIMER_REAL, &off, &former_);
    clock_gettime(CLOCK_MONOTONIC, &begin_);
    sigset_t pending;
    sigpending(&pending);
    pending_ = sigismember(&pending, SIGALRM) == 1;
  }
  ~AlarmPause() {
    ErrnoKeeper keep;
    if (pending_) kill(getpid(), SIGALRM);  // a wait that opened the mask has swallowed it
    if (!armed()) return;
    former_.it_value = remaining();
    setitimer(ITIMER_REAL, &former_, nullptr);
  }
  AlarmPause(const AlarmPause&) = delete;
  AlarmPause& operator=(const AlarmPause&) = delete;

 private:
  bool armed() const { return former_.it_value.tv_sec != 0 || former_.it_value.tv_usec != 0; }

  // At least a microsecond: a timer that ran out meanwhile fires at once, it is not lost. No
  // division of 64 bits, for which a 32-bit processor needs 2 KB of code.
  timeval remaining() const {
    timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    timeval passed = {now.tv_sec - begin_.tv_sec, (now.tv_nsec - begin_.tv_nsec) / 1000};
    if (passed.tv_usec < 0) {
      --passed.tv_sec;
      passed.tv_usec += 1000000;
    }
    timeval rest;
    timersub(&former_.it_value, &passed, &rest);
    if (rest.tv_sec < 0 || !timerisset(&rest)) return {0, 1};
    return rest;
  }

  timespec begin_;
  itimerval former_;
  bool pending_;
};

// SIGALRM after `seconds`, at least 1, and again every 20 milliseconds until the end: the first
// one, when it comes just before the blocking call, would interrupt nothing.
class AlarmScope {
 public:
  explicit AlarmScope(int seconds) {
    const itimerval timer = {{0, kRepeatMicroseconds}, {seconds, 0}};
    setitimer(ITIMER_REAL, &timer, nullptr);
  }
  ~AlarmScope() {
    ErrnoKeeper keep;
    const itimerval off = {};
    setitimer(ITIMER_REAL, &off, nullptr);
  }
  AlarmScope(const AlarmScope&) = delete;
  AlarmScope& operator=(const AlarmScope&) = delete;

 private:
  static constexpr suseconds_t kRepeatMicroseconds = 20000;
};

}  // namespace fairlead
