// A command without a shell, with a limit on its time.
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstring>
#include <optional>

#include "base/alarm_scope.h"
#include "base/fail.h"
#include "fairlead/misc/process.h"
#include "misc/command.h"
#include "misc/null_streams.h"

namespace {

using fairlead::AlarmPause;
using fairlead::AlarmScope;
using fairlead::CommandSignals;
using fairlead::CommandText;
using fairlead::HandlerScope;

constexpr const char* kBlanks = " \t";
constexpr size_t kProgramSize = 256;
constexpr int kMaxWords = 20;
constexpr int kCannotRun = 127;

// Written by the handler alone, read by the waiting loop; one timed command at a time.
volatile sig_atomic_t timed_out = 0;

void note_alarm(int) { timed_out = 1; }

// The command's words in place, without quoting; words beyond the twentieth are dropped.
struct Words {
  explicit Words(char* command) {
    char* rest = nullptr;
    for (char* word = strtok_r(command, kBlanks, &rest); word && count < kMaxWords;
         word = strtok_r(nullptr, kBlanks, &rest))
      vector[count++] = word;
    if (count > 0) program.add(vector[0]);
  }

  char* vector[kMaxWords + 1] = {};
  int count = 0;
  fairlead::FixedText<kProgramSize> program;
};

// As exec will do a moment later. Until then a handler would run in the parent's memory.
void drop_handlers() {
  for (int number = 1; number < NSIG; ++number) {
    struct sigaction action;
    if (sigaction(number, nullptr, &action) != 0) continue;
    if (action.sa_handler == SIG_DFL || action.sa_handler == SIG_IGN) continue;
    action = {};
    action.sa_handler = SIG_DFL;
    sigaction(number, &action, nullptr);
  }
}

// Only calls that are safe beside the parent's memory, which a child made by vfork shares.
[[noreturn]] void become(const Words& words, const CommandSignals& signals, int quiet) {
  signals.put_back_handlers();
  drop_handlers();
  signals.mask().put_back();
  if (quiet) fairlead::silence_standard_streams();
  if (words.count > 0) execvp(words.program.text(), words.vector);
  _exit(kCannotRun);
}

// The wait status, or 0 when the wait failed; `error` becomes the errno of the whole call.
int wait_for(pid_t child, int& error) {
  int status = 0;
  error = 0;
  while (waitpid(child, &status, 0) != child) {
    if (errno != EINTR) {
      error = errno;
      kill(child, SIGTERM);
      return 0;
    }
    if (timed_out) {
      kill(child, SIGKILL);
      error = ETIMEDOUT;
    }
  }
  return status;
}

int wait_bounded(pid_t child, int seconds, const CommandSignals& signals, int& error) {
  std::optional<HandlerScope> handler;
  std::optional<AlarmScope> alarm;
  if (seconds > 0) handler.emplace(SIGALRM, note_alarm);
  signals.mask().let_through({SIGQUIT, SIGINT, SIGCHLD, SIGALRM});
  timed_out = 0;  // not before: an alarm that was blocked until now is none of ours
  if (seconds > 0) alarm.emplace(seconds);
  return wait_for(child, error);
}

}  // namespace

extern "C" int system_call(int seconds, int quiet, const char* format, ...) {
  if (!format || !*format) return fairlead::fail(EINVAL, -1);
  CommandText command;
  va_list arguments;
  va_start(arguments, format);
  command.vformat(format, arguments);
  va_end(arguments);
  if (command.failed()) return -1;

  const Words words(command.text());
  std::optional<AlarmPause> caller_alarm;
  if (seconds > 0) caller_alarm.emplace();
  const CommandSignals signals;
  signals.mask().block_all();  // no handler of the caller's may run in the child
  const pid_t child = vfork();
  if (child < 0) return -1;
  if (child == 0) become(words, signals, quiet);

  int error = 0;
  const int status = wait_bounded(child, seconds, signals, error);
  errno = error;
  return WIFSIGNALED(status) ? -1 : WEXITSTATUS(status);
}
