// A command without a shell, with a limit on its time.
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstring>
#include <optional>

#include "base/bounded_text.h"
#include "base/fail.h"
#include "fairlead/misc/process.h"
#include "misc/command_scope.h"

namespace {

using fairlead::AlarmScope;
using fairlead::CommandSignals;
using fairlead::HandlerScope;

constexpr size_t kCommandSize = 4096;
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
    for (char* word = strtok_r(command, " ", &rest); word && count < kMaxWords;
         word = strtok_r(nullptr, " ", &rest))
      vector[count++] = word;
    program.add(count > 0 ? vector[0] : "");
  }

  char* vector[kMaxWords + 1] = {};
  int count = 0;
  fairlead::FixedText<kProgramSize> program;
};

// Only calls that are safe beside the parent's memory, which a child made by vfork shares.
[[noreturn]] void become(Words& words, const CommandSignals& signals, int quiet) {
  signals.put_back_in_child();
  if (quiet) {
    const int null = open("/dev/null", O_RDWR);
    if (null >= 0) {
      dup2(null, STDIN_FILENO);
      dup2(null, STDOUT_FILENO);
      dup2(null, STDERR_FILENO);
      if (null > STDERR_FILENO) close(null);
    }
  }
  if (words.count > 0) execvp(words.program.text(), words.vector);
  _exit(kCannotRun);
}

// Waits for the child's end. The status, or 0 when the wait failed; `error` becomes the call's
// errno.
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

int wait_bounded(pid_t child, int seconds, int& error) {
  timed_out = 0;
  if (seconds <= 0) return wait_for(child, error);
  HandlerScope handler(SIGALRM, note_alarm);
  AlarmScope alarm(seconds);
  return wait_for(child, error);
}

}  // namespace

extern "C" int system_call(int seconds, int quiet, const char* format, ...) {
  if (!format || !*format) return fairlead::fail(EINVAL, -1);
  char command[kCommandSize];
  va_list arguments;
  va_start(arguments, format);
  const int length = vsnprintf(command, sizeof command, format, arguments);
  va_end(arguments);
  if (length < 0) return -1;

  Words words(command);
  const CommandSignals signals({SIGQUIT, SIGINT, SIGCHLD, SIGALRM});
  const pid_t child = vfork();
  if (child < 0) return -1;
  if (child == 0) become(words, signals, quiet);

  int error = 0;
  const int status = wait_bounded(child, seconds, error);
  errno = error;
  return WIFSIGNALED(status) ? -1 : WEXITSTATUS(status);
}
