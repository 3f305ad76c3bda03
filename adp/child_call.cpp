// The road of every request that a child answers: socket pair, SIGCHLD, fork, answer, and
// everything put back.
#include "adp/child_call.h"

#include <cxxabi.h>
#include <stdio_ext.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <syslog.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <ctime>
#include <utility>

#include "base/descriptor.h"
#include "fairlead/adp/isolated.h"
#include "fairlead/misc/process.h"
#include "log/level_words.h"

namespace fairlead {
namespace {

// What a child call changes in the process. No scope object: two ways out leave the changes in
// force on purpose.
struct ChildSignals {
  struct sigaction former_action;
  sigset_t saved_mask;    // as the caller had it
  sigset_t outside_mask;  // SIGCHLD blocked: while the call runs
  sigset_t wait_mask;     // SIGCHLD open: only inside the wait for data
  bool was_pending;       // one that the caller keeps blocked
  bool has_handler;       // the empty one was there before, and stays

  // No handler of the caller waits for the child's end.
  bool end_is_unseen() const {
    return (has_handler || former_action.sa_handler == SIG_DFL) &&
           sigismember(&saved_mask, SIGCHLD) == 0;
  }
};

// From the second call on, where the caller has no handler of its own.
bool is_empty_handler(const struct sigaction& action) {
  constexpr unsigned kUnlikeOurs = SA_SIGINFO | SA_NOCLDWAIT | SA_RESETHAND | SA_RESTART;
  const auto flags = static_cast<unsigned>(action.sa_flags);
  return action.sa_handler == signal_handler && (flags & kUnlikeOurs) == 0;
}

void drop_pending() {
  sigset_t only;
  sigemptyset(&only);
  sigaddset(&only, SIGCHLD);
  const timespec no_wait = {};
  sigtimedwait(&only, nullptr, &no_wait);
}

// A SIGCHLD from before would end the first wait as if the new child had ended.
bool take_pending() {
  sigset_t pending;
  sigpending(&pending);
  if (sigismember(&pending, SIGCHLD) != 1) return false;
  drop_pending();
  return true;
}

void prepare(const ChildCall& call, ChildSignals& signals) {
  sigaction(SIGCHLD, nullptr, &signals.former_action);
  signals.has_handler = is_empty_handler(signals.former_action);
  if (!signals.has_handler) signal_register(SIGCHLD, signal_handler);

  sigemptyset(&signals.saved_mask);
  if (sigprocmask(SIG_SETMASK, nullptr, &signals.saved_mask) != 0)
    LogWrite(kWarning, call.source, __LINE__, "sigprocmask( get the original signal mask ) failed");
  signals.outside_mask = signals.wait_mask = signals.saved_mask;
  sigaddset(&signals.outside_mask, SIGCHLD);
  sigdelset(&signals.wait_mask, SIGCHLD);
  if (sigprocmask(SIG_SETMASK, &signals.outside_mask, nullptr) != 0)
    LogWrite(kWarning, call.source, __LINE__, "sigprocmask( set a new signal mask ) failed");
  signals.was_pending = take_pending();
}

// The default action is not put back: the empty handler stays, as callers have come to rely on.
void put_back(const ChildCall& call, const ChildSignals& signals) {
  if (signals.former_action.sa_handler != SIG_DFL && !signals.has_handler)
    sigaction(SIGCHLD, &signals.former_action, nullptr);
  if (sigprocmask(SIG_SETMASK, &signals.saved_mask, nullptr) != 0)
    LogWrite(kWarning, call.source, __LINE__, "sigprocmask( reset SIGCHLD ) failed");
}

// An adapter that calls exit, or a lack of memory, must not run what the caller has registered for
// its own end. What atexit(3) does; that itself needs start files, which this library does without.
void run_no_exit_handlers() {
  constexpr int kStatus = 127;
  abi::__cxa_atexit([](void*) { _exit(kStatus); }, nullptr, nullptr);
}

[[noreturn]] void serve(const ChildCall& call, const ChildSignals& signals, Descriptor& parent_end,
                        int answer_fd, ChildBody body, const void* request) {
  __fpurge(stdout);  // the caller writes it; a message on the console would do so here as well
  run_no_exit_handlers();
  closelog();
  openlog(call.name, 0, LOG_DAEMON);
  put_back(call, signals);
  parent_end.reset();
  body(request, answer_fd);
  _exit(0);
}

// Waits for the child; true, logged, when a signal ended it.
bool died(const ChildCall& call, pid_t child) {
  int status = 0;
  while (waitpid(child, &status, 0) < 0)
    if (errno != EINTR) return false;
  if (!WIFSIGNALED(status)) return false;
  if (call.named_end)
    LogWrite(kError, call.source, __LINE__, "%s( %s ) terminate by signal %d", call.function,
             call.subject, WTERMSIG(status));
  else
    LogWrite(kError, call.source, __LINE__, "%s terminate by signal %d", call.subject,
             WTERMSIG(status));
  return true;
}

void bring_back_pending(const ChildSignals& signals) {
  if (signals.was_pending) kill(getpid(), SIGCHLD);
}

// Closes the call in the parent. False: a signal ended the child.
bool finish(const ChildCall& call, const ChildSignals& signals, pid_t child, int32_t reaped) {
  const int before = errno;
  const bool unseen = signals.end_is_unseen();
  if (!unseen) put_back(call, signals);
  bring_back_pending(signals);
  const bool lived = reaped == 0 ? !died(call, child) : reaped > 0;
  // The frame of a handler that does nothing would take a page of the stack or two.
  if (unseen && reaped == 0) drop_pending();
  if (unseen) put_back(call, signals);
  if (errno != before) errno = before;  // so soon after the fork, a write takes a page
  return lived;
}

bool connect(Descriptor& parent_end, Descriptor& child_end) {
  int ends[2];
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) return false;
  Descriptor first(ends[0]), second(ends[1]);
  parent_end = beside_standard(std::move(first));
  child_end = beside_standard(std::move(second));  // an adapter that prints gives no answer by that
  return parent_end && child_end;
}

}  // namespace

talk_t* call_child(const ChildCall& call, ChildBody body, const void* request) {
  Descriptor parent_end, child_end;
  if (!connect(parent_end, child_end)) {
    LogWrite(kErrorWithErrno, call.source, __LINE__, "socketpair error for %s( %s )", call.function,
             call.name);
    return nullptr;
  }

  ChildSignals signals;
  prepare(call, signals);
  const pid_t child = fork();
  if (child < 0) {
    LogWrite(kErrorWithErrno, call.source, __LINE__, "vfork error for %s( %s )", call.function,
             call.subject);
    bring_back_pending(signals);
    return nullptr;
  }
  if (child == 0) serve(call, signals, parent_end, child_end.get(), body, request);

  child_end.reset();
  int32_t reaped = 0;
  talk_t* answer = pipe_fdtalk(parent_end.get(), &signals.wait_mask, &signals.outside_mask,
                               call.name, child, &reaped);
  parent_end.reset();
  if (!finish(call, signals, child, reaped) && !answer) errno = ECHILD;
  return answer;
}

}  // namespace fairlead
