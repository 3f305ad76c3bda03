// Services stopped, reset and switched off, and their processes found.
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <ctime>

#include "base/deadline.h"
#include "base/fail.h"
#include "base/same_file.h"
#include "fairlead/misc/process.h"
#include "fairlead/service.h"
#include "service/record.h"
#include "service/record_path.h"

namespace {

using namespace fairlead;

constexpr int kShared = 0;
constexpr timespec kPause = {0, 10000000};
constexpr int kLongestRemoval = 1;  // seconds; an emptied record that stays does no harm

struct Demand {
  int signal_number;
  int seconds;  // to wait for the end
};
// The last wait is for the kernel, which may take a moment to end even a killed process.
constexpr Demand kEscalation[] = {{SIGTERM, 2}, {SIGTERM, 3}, {SIGKILL, 2}};

// A daemon has gone once its lock can be shared.
bool take_over(int fd, int seconds) { return lockfd_set(fd, kShared, 0, SEEK_SET, 0, seconds); }

// A handler of the caller's ends the wait for a lock early, but not the daemon's time.
bool wait_for_end(int fd, int seconds) {
  const Deadline deadline(seconds);
  while (const int left = deadline.milliseconds_left()) {
    if (take_over(fd, (left + 999) / 1000)) return true;
    nanosleep(&kPause, nullptr);
  }
  return take_over(fd, 0);
}

// Ends the record's daemon. Afterwards this process has the record, so that none is started before
// it lets go of it, unless one was started in time every time. False with errno: ESRCH no daemon |
// that of kill.
bool end_daemon(int fd) {
  bool signalled = false;
  for (const Demand& demand : kEscalation) {
    // Asked anew each time: the number may belong to another process by now.
    const pid_t daemon = lock_holder(fd);
    if (daemon > 0) {
      if (kill(daemon, demand.signal_number) != 0 && errno != ESRCH) return false;
      signalled = true;
    }
    if (wait_for_end(fd, demand.seconds)) break;
  }
  return signalled || fail<bool>(ESRCH);
}

// A daemon that ends itself cannot wait for it.
int signal_myself() { return kill(getpid(), SIGTERM) == 0 ? 0 : -1; }

int stop_myself(const char* path) {
  if (truncate(path, 0) != 0) return -1;
  unlink(path);
  return signal_myself();
}

// Of those who end a daemon at the same time one at most removes its record: another one could do
// so between the look at the name and its removal, and a new daemon have its record there by then.
// The lock is no business of daemons, whose own are of the other kind, and ends with the
// descriptor.
bool is_alone_in_removing(int fd) {
  const Deadline deadline(kLongestRemoval);
  while (flock(fd, LOCK_EX | LOCK_NB) != 0) {
    if (errno != EWOULDBLOCK && errno != EINTR) return false;
    if (deadline.milliseconds_left() == 0) return false;
    nanosleep(&kPause, nullptr);
  }
  return true;
}

// Unless a daemon holds it even now, one that was started meanwhile as a rule, or another process
// has made a new record of that name: nobody would find a daemon whose record is removed.
void remove_record(int fd, const char* path) {
  const ErrnoKeeper keep;
  struct stat own, named;
  if (!take_over(fd, 0) || !is_alone_in_removing(fd)) return;
  if (fstat(fd, &own) == 0 && stat(path, &named) == 0 && same_file(own, named)) unlink(path);
}

int stop(const RecordPath& path) {
  if (!path) return -1;
  if (own_lock(path.text()) >= 0) return stop_myself(path.text());
  // Emptied from the start, so that a check at the same time does not restart it.
  const Descriptor record(open(path.text(), O_RDWR | O_TRUNC | kAsItStands | O_CLOEXEC));
  if (!record) return -1;
  const bool ended = end_daemon(record.get());
  // A daemon that must not be signalled lives on, and its emptied record still tells where.
  if (ended || errno == ESRCH) remove_record(record.get(), path.text());
  return ended ? 0 : -1;
}

// A daemon that opened its own record would lose its lock by closing it.
int switch_off(const RecordPath& path) {
  if (!path) return -1;
  if (own_lock(path.text()) >= 0) return truncate(path.text(), 0);
  const Descriptor record(open(path.text(), O_WRONLY | O_TRUNC | kAsItStands | O_CLOEXEC));
  return record ? 0 : -1;
}

int reset(const RecordPath& path) {
  if (!path) return -1;
  bool ended = own_lock(path.text()) >= 0;
  if (ended) {
    if (signal_myself() != 0) return -1;
  } else {
    const Descriptor record(open(path.text(), O_RDWR | kAsItStands | O_CLOEXEC));
    if (!record) return -1;
    ended = end_daemon(record.get());
  }  // closed, or the new daemon would find the record taken
  const ErrnoKeeper keep;
  DaemonCheck();
  return ended ? 0 : -1;
}

}  // namespace

extern "C" int ServiceStop(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const RecordPath path(format, arguments);
  va_end(arguments);
  return stop(path);
}

extern "C" int ServiceReset(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const RecordPath path(format, arguments);
  va_end(arguments);
  return reset(path);
}

extern "C" int ServiceOff(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const RecordPath path(format, arguments);
  va_end(arguments);
  return switch_off(path);
}

extern "C" pid_t ServicePid(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const RecordPath path(format, arguments);
  va_end(arguments);
  const OpenRecord record(path.text());
  return record ? record.holder() : -1;
}
