// The pipe from a daemon that is being launched to the caller of ServiceStart.
#include "service/launch_notice.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>

#include "base/deadline.h"
#include "base/errno_keeper.h"

namespace fairlead {
namespace {

constexpr int kLongestLaunch = 5;  // seconds
constexpr char kStays = '+';

// True when there is something to read, the end included.
bool wait_readable(int fd, const Deadline& deadline) {
  pollfd readable = {fd, POLLIN, 0};
  int ready;
  do {
    ready = poll(&readable, 1, deadline.milliseconds_left());
  } while (ready < 0 && errno == EINTR);
  return ready == 1;
}

}  // namespace

LaunchNotice::LaunchNotice() {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) return;
  // A daemon's standard streams are replaced on its way; that must not end the pipe.
  reader_ = beside_standard(Descriptor(ends[0]));
  writer_ = beside_standard(Descriptor(ends[1]));
}

void LaunchNotice::stay() const {
  ssize_t written;
  do {
    written = write(writer_.get(), &kStays, 1);
  } while (written < 0 && errno == EINTR);
}

void LaunchNotice::wait(pid_t first_child) {
  const ErrnoKeeper keep;
  writer_.reset();
  const Launch launch = wait_for_launch();
  const int options = launch == Launch::kEnded ? 0 : WNOHANG;
  while (waitpid(first_child, nullptr, options) < 0 && errno == EINTR) continue;
}

LaunchNotice::Launch LaunchNotice::wait_for_launch() const {
  if (!reader_) return Launch::kEnded;
  const Deadline deadline(kLongestLaunch);
  Launch launch = Launch::kEnded;
  for (;;) {
    if (!wait_readable(reader_.get(), deadline)) return Launch::kUnknown;
    char said;
    const ssize_t got = read(reader_.get(), &said, 1);
    if (got == 0) return launch;
    if (got > 0) launch = Launch::kStays;
    if (got < 0 && errno != EINTR) return Launch::kUnknown;
  }
}

}  // namespace fairlead
