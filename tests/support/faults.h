// Faults on demand: the n-th allocation or system call fails, moves fewer bytes, or is the last
// thing the process does.
//
// The test program defines these functions itself, so the shared library's calls arrive here first.
// Calls inside the C library are not seen, except for allocations: strdup, fopen, opendir and their
// like allocate through malloc.
#pragma once

#include <csignal>
#include <cstddef>
#include <cstdint>

namespace fairlead_test {

enum class Call {
  kMalloc,  // malloc, calloc, realloc
  kOpen,    // open, openat, creat, mkstemp, mkostemp
  kRead,    // read, pread
  kWrite,   // write, pwrite
  kFsync,   // fsync, fdatasync
  kRename,
  kLink,  // link, linkat, symlink
  kUnlink,
  kTruncate,  // ftruncate, truncate
  kMkdir,
  kRmdir,
  kStat,   // stat, lstat, fstat, fstatat
  kMode,   // chmod, fchmod
  kOwner,  // chown, fchown
  kClose,
  kDup,  // dup, dup2, dup3
  kFcntl,
  kFlock,
  kMmap,
  kFopen,
  kFclose,
  kOpendir,
  kFork,  // fork, vfork
  kWaitpid,
  kKill,
  kPipe,  // pipe, pipe2
  kSocket,
  kSocketpair,
  kConnect,
  kSelect,  // select, pselect, poll, ppoll
  kIoctl,   // ioctl, tcgetattr, tcsetattr, tcflush
  kMask,    // sigprocmask
  kSleep,   // nanosleep
  kAny,     // each of the above but allocations: for ending a process at any point of its work
};

inline constexpr int kForever = INT32_MAX;

// What happens to which calls, counted from 1 from the moment the fault is armed.
struct FaultPlan {
  int nth = 1;                // 0: none, the calls are only counted
  int error = 0;              // the call is not made and fails with this errno
  int times = 1;              // so many calls in a row
  size_t at_most = SIZE_MAX;  // read and write move no more bytes than this
  int signal = 0;             // sent to the process itself before the call, such as SIGKILL
};

// Armed while it lives. A forked child inherits the plan and the count so far.
class Fault {
 public:
  Fault(Call call, FaultPlan plan);
  ~Fault() { disarm(); }
  Fault(const Fault&) = delete;
  Fault& operator=(const Fault&) = delete;

  void disarm();
  bool fired() const;  // in this process or in a child of it
  int calls() const;   // made by this process since the fault was armed

 private:
  Call call_;
  bool fired_ = false;
  int calls_ = 0;
  bool armed_ = true;
};

// Fails the first call of an action, in the next round the second, and so on; the last round is the
// one in which nothing was left to fail:
//   for (EachCall each(Call::kWrite, {.error = ENOSPC}); each.next();) {
//     const int result = each.run([&] { return VesselFile(vessel, path); });
//     EXPECT_EQ(each.fired() ? 0 : 1, result) << each.nth();
//   }
class EachCall {
 public:
  EachCall(Call call, FaultPlan plan) : call_(call), plan_(plan) { plan_.nth = 0; }

  bool next() {
    if (plan_.nth > 0 && !fired_) return false;
    ++plan_.nth;
    fired_ = false;
    return true;
  }

  // Runs the action under the fault; what follows in the loop runs without it.
  template <class Action>
  auto run(Action action) {
    struct Note {
      ~Note() { out = fault.fired(); }
      bool& out;
      Fault& fault;
    };
    Fault fault(call_, plan_);
    Note note{fired_, fault};
    return action();
  }

  int nth() const { return plan_.nth; }
  bool fired() const { return fired_; }

 private:
  Call call_;
  FaultPlan plan_;
  bool fired_ = false;
};

// For a process that is about to end.
void disarm_all_faults();

// What becomes of one call; asked by the functions that stand in for the real ones.
struct Verdict {
  bool fails = false;  // errno is set
  size_t at_most = SIZE_MAX;
};
Verdict judge(Call call);

}  // namespace fairlead_test
