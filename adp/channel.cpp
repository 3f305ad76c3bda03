// The parent's side of the channel: waits for a child's answer and watches for the child's end.
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <ctime>

#include "adp/log_source.h"
#include "fairlead/adp/isolated.h"
#include "fairlead/misc/process.h"
#include "log/level_words.h"
#include "talk/answer.h"

namespace {

using namespace fairlead;

constexpr timespec kDrainTime = {3, 0};

struct Child {
  const char* name;
  pid_t pid;
  int32_t* reaped;
};

// After an interrupted wait. True: the wait goes on, bounded once `drain` is set.
bool watch_child(const Child& child, bool& drain) {
  int status = -1;  // what a waitpid without news leaves: decoded as a normal end, so the drain
                    // begins all the same
  if (waitpid(child.pid, &status, WNOHANG) < 0) return true;
  if (WIFSIGNALED(status)) {
    LogWrite(kError, kAdpSource, __LINE__, "%s terminate by signal %d", child.name,
             WTERMSIG(status));
    *child.reaped = -1;
    return false;
  }
  *child.reaped = 1;
  drain = true;
  return true;
}

}  // namespace

extern "C" talk_t* pipe_fdtalk(
    int fd, const sigset_t* wait_mask, const sigset_t* outside_mask,
    // NOLINTNEXTLINE(readability-non-const-parameter): written through `child`
    const char* name, pid_t pid, int32_t* reaped) {
  AnswerBuffer answer;
  if (!fd_nonblock(fd)) return nullptr;
  sigprocmask(SIG_SETMASK, outside_mask, nullptr);

  const Child child = {name, pid, reaped};
  bool drain = false;
  for (;;) {
    // One step opens SIGCHLD and begins the wait: a signal just before it interrupts it all the
    // same.
    pollfd channel = {fd, POLLIN | POLLPRI, 0};
    const int found = ppoll(&channel, 1, drain ? &kDrainTime : nullptr, wait_mask);
    if (found == 0) break;
    if (found < 0) {
      if (errno != EINTR || !watch_child(child, drain)) break;
      continue;
    }
    const ssize_t received = answer.receive(fd);
    if (received < 0) {
      if (errno == EINTR) continue;
      return nullptr;
    }
    if (received == 0 || answer.complete()) break;
  }
  return answer.decode();
}
