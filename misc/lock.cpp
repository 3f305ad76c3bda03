// Record locks on descriptors, with a limit on the wait.
#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <ctime>

#include "base/alarm_scope.h"
#include "base/deadline.h"
#include "base/fail.h"
#include "base/signal_scope.h"
#include "fairlead/misc/process.h"

namespace {

using fairlead::AlarmPause;
using fairlead::AlarmScope;
using fairlead::Deadline;
using fairlead::fail;
using fairlead::HandlerScope;
using fairlead::MaskScope;

// A wart kept on purpose: lockfd_free hands the lock description to the operation for descriptor
// flags, which takes its address for the flags. So no lock is released, and close-on-exec becomes
// the lowest bit of the address. Daemons rely on the lock that stays.
constexpr int kLowestAddressBit = 0;
static_assert(alignof(struct flock) > 1);

struct flock describe(int type, int start, int whence, int length) {
  struct flock lock = {};
  lock.l_type = type == 1 ? F_WRLCK : F_RDLCK;
  lock.l_whence = static_cast<short>(whence);
  lock.l_start = start;
  lock.l_len = length;
  return lock;
}

bool held_elsewhere() { return errno == EAGAIN || errno == EACCES; }

// Whatever ends the wait, an interrupting handler of the caller's included, is told as EBUSY.
int wait_for_lock(int fd, struct flock& lock) {
  return fcntl(fd, F_SETLKW, &lock) == 0 ? 1 : fail<int>(EBUSY);
}

int wait_bounded(int fd, struct flock& lock, int seconds) {
  AlarmPause caller_alarm;
  HandlerScope handler(SIGALRM, signal_handler);
  MaskScope mask;
  mask.let_through({SIGALRM});
  AlarmScope alarm(seconds);
  return wait_for_lock(fd, lock);
}

// By the system call: not every C library has the function.
bool in_first_thread() { return syscall(SYS_gettid) == getpid(); }

// The alarm and its handler are the process', and it is the first thread that they wake. Any other
// one would wait without a limit, and take the alarm away from one that waits at the same time.
int ask_again_and_again(int fd, struct flock& lock, int seconds) {
  constexpr timespec kPause = {0, 5000000};
  const Deadline deadline(seconds);
  while (!deadline.passed()) {
    nanosleep(&kPause, nullptr);
    if (fcntl(fd, F_SETLK, &lock) == 0) return 1;
    if (!held_elsewhere()) break;
  }
  return fail<int>(EBUSY);
}

}  // namespace

extern "C" pid_t lockfd_get(int fd, int type, int start, int whence, int length) {
  struct flock lock = describe(type, start, whence, length);
  if (fcntl(fd, F_GETLK, &lock) != 0 || lock.l_type == F_UNLCK) return -1;
  return lock.l_pid;
}

extern "C" int lockfd_set(int fd, int type, int start, int whence, int length, int seconds) {
  struct flock lock = describe(type, start, whence, length);
  // Free most of the time: the signal state of the process changes only when there is something to
  // wait for.
  if (fcntl(fd, F_SETLK, &lock) == 0) return 1;
  if (seconds == 0) return 0;
  if (!held_elsewhere()) return fail<int>(EBUSY);
  if (seconds < 0) return wait_for_lock(fd, lock);
  return in_first_thread() ? wait_bounded(fd, lock, seconds)
                           : ask_again_and_again(fd, lock, seconds);
}

extern "C" int lockfd_free(int fd, int, int, int, int) {
  return fcntl(fd, F_SETFD, kLowestAddressBit) == 0 ? 1 : 0;
}
