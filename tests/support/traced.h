// An action whose system calls, and those of its children, are watched, fail, or meet a signal: at
// the border of the kernel, so that calls from inside the C library count as well.
#pragma once

#include <sys/syscall.h>

#include <cstdint>
#include <functional>

#include "support/child.h"

namespace fairlead_test {

struct CallMade {
  pid_t pid;
  long number;  // SYS_...
  uint64_t arguments[6];
  int64_t result;  // below 0: minus errno
};

// What happens to which call, counted from 1 over the action's process and its children; a child
// counts until it runs another program.
struct TracePlan {
  int nth = 0;    // 0: none
  int error = 0;  // the nth call fails with this errno: close after its work, others without it
  int signal =
      0;  // sent at the nth stop, each call having one when it is entered and one when left
  bool to_caller = false;  // the signal goes to the action's own process, not to the one that stops
  std::function<void(const CallMade&)> watch = {};
};

struct Traced {
  bool met = false;  // there were as many calls or stops
  int stops = 0;     // seen, up to the end or the death of the action's process
  long number = -1;  // the call that was met
  Ended ended;       // of the action's process
};

// Not every processor has a call of its own for it.
#ifdef SYS_vfork
inline constexpr int kVforkCall = SYS_vfork;
#else
inline constexpr int kVforkCall = SYS_fork;
#endif

// Whether calls can be made to fail here.
bool can_trace();

// Runs the action in a child; before it `first` and after it `then`, untraced in the same child.
// The value of `then` is the child's exit status.
Traced run_traced(
    const TracePlan& plan, const std::function<void()>& action, const std::function<int()>& then,
    const std::function<void()>& first = [] {});

// The kinds of failure that a call can meet: whether this errno is one of them.
bool may_fail(long number, int error);

}  // namespace fairlead_test
