// A host's address, with a limit on the wait for the name server.
#include <arpa/inet.h>
#include <netdb.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <optional>

#include "base/alarm_scope.h"
#include "base/bounded_text.h"
#include "base/descriptor.h"
#include "base/errno_keeper.h"
#include "base/fail.h"
#include "base/result_buffer.h"
#include "base/signal_scope.h"
#include "fairlead/misc/network.h"

namespace {

using fairlead::AlarmPause;
using fairlead::AlarmScope;
using fairlead::Descriptor;
using fairlead::ErrnoKeeper;
using fairlead::fail;
using fairlead::HandlerScope;
using fairlead::MaskScope;

// For callers without a buffer of their own, from one thread at a time.
char process_buffer[20];

// Written by the handler alone, read by the one call that waits.
volatile sig_atomic_t interrupted = 0;

void note_alarm(int) { interrupted = 1; }

// What the child writes into the pipe, whole or not at all.
struct Answer {
  int h_error;
  char address[INET6_ADDRSTRLEN];  // empty: there is none
};
static_assert(sizeof(Answer) <= 512, "a pipe takes no more in one piece everywhere");

Answer look_up(const char* name) {
  Answer answer = {};
  const hostent* host = gethostbyname(name);
  if (!host)
    answer.h_error = h_errno;
  else if (!host->h_addr_list[0])
    answer.h_error = NO_DATA;
  else
    inet_ntop(host->h_addrtype, host->h_addr_list[0], answer.address, sizeof answer.address);
  return answer;
}

// A resolver that is left by a jump out of a handler keeps its lock, and the next name would be
// waited for without end. So a child of its own asks, which can be ended at any point.
class Resolver {
 public:
  explicit Resolver(const char* name) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) return;
    Descriptor written(ends[1]);
    pipe_.reset(ends[0]);
    child_ = fork();
    if (child_ == 0) serve(name, written.get());
  }
  ~Resolver() {
    if (child_ <= 0) return;
    ErrnoKeeper keep;
    // Where the caller ignores SIGCHLD, the number of a child that has ended is free for others.
    if (!ended_) kill(child_, SIGKILL);
    while (waitpid(child_, nullptr, 0) < 0 && errno == EINTR) continue;
  }
  Resolver(const Resolver&) = delete;
  Resolver& operator=(const Resolver&) = delete;

  bool started() const { return child_ > 0; }

  // False when SIGALRM, which gets through during the wait alone, came first.
  bool wait_for(Answer& answer, const sigset_t& mask) {
    pollfd wanted = {pipe_.get(), POLLIN, 0};
    int ready;
    do {
      ready = ppoll(&wanted, 1, nullptr, &mask);
    } while (ready < 0 && errno == EINTR && !interrupted);
    ended_ = ready > 0;  // it writes last of all, and its end closes the pipe
    return ended_ && read(pipe_.get(), &answer, sizeof answer) == sizeof answer;
  }

 private:
  // With every signal blocked, so that no handler of the caller's runs here.
  [[noreturn]] static void serve(const char* name, int fd) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);  // nobody else would end it when the caller is killed
    const Answer answer = look_up(name);
    _exit(write(fd, &answer, sizeof answer) == sizeof answer ? 0 : 1);
  }

  Descriptor pipe_;
  pid_t child_ = -1;
  bool ended_ = false;
};

// The mask of the wait: the caller's, but SIGALRM comes through, and SIGCHLD not, so that no
// handler of the caller's reaps the resolver.
sigset_t mask_of_wait(const sigset_t& callers) {
  sigset_t mask = callers;
  sigdelset(&mask, SIGALRM);
  sigaddset(&mask, SIGCHLD);
  return mask;
}

// Lets an alarm that waits at the mask through to our handler, where it is forgotten; and nothing
// else, for the resolver's end may wait there too.
void swallow_alarm(const MaskScope& mask) {
  sigset_t others;
  sigfillset(&others);
  sigdelset(&others, SIGALRM);
  sigprocmask(SIG_SETMASK, &others, nullptr);
  mask.block_all();
  interrupted = 0;
}

// False: not even asked, with errno.
bool resolve(const char* name, int seconds, Answer& answer) {
  std::optional<AlarmPause> caller_alarm;
  if (seconds > 0) caller_alarm.emplace();
  const MaskScope mask;  // undone after the handler: what comes at the end is the caller's
  mask.block_all();
  const HandlerScope handler(SIGALRM, note_alarm);
  interrupted = 0;
  if (seconds > 0) swallow_alarm(mask);
  Resolver resolver(name);
  if (!resolver.started()) return false;

  ErrnoKeeper keep;
  std::optional<AlarmScope> alarm;
  if (seconds > 0) alarm.emplace(seconds);
  if (!resolver.wait_for(answer, mask_of_wait(mask.former()))) answer = {TRY_AGAIN, ""};
  alarm.reset();
  if (seconds > 0) swallow_alarm(mask);
  return true;
}

char* give(const fairlead::ResultBuffer& result, const char* address) {
  memset(result.text, 0, result.size);
  fairlead::BoundedText(result.text, result.size).add(address);
  return result.text;
}

bool dotted(const char* name) {
  in_addr address;
  return inet_pton(AF_INET, name, &address) == 1;
}

}  // namespace

extern "C" char* dns2ipstring(const char* name, char* buffer, int size, int seconds) {
  if (!name || !*name) return fail<char*>(EINVAL);
  const fairlead::ResultBuffer result = fairlead::choose_buffer(buffer, size, process_buffer);
  if (dotted(name)) return give(result, name);

  Answer answer;
  if (!resolve(name, seconds, answer)) return nullptr;
  if (answer.address[0]) return give(result, answer.address);
  h_errno = answer.h_error;
  return nullptr;
}
