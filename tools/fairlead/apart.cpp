// A command's work in a process of its own.
#include "tools/fairlead/apart.h"

#include <sys/wait.h>

#include <cerrno>
#include <cstring>

#include "tools/fairlead/report.h"
#include "tools/standard_streams.h"

namespace control {

Exit guarded(const Call& call, Exit (*work)(const Call& call)) {
  fflush(stdout);
  const pid_t child = fork();
  if (child < 0) return fail_because(errno, "no process can be made");
  if (child == 0) {
    const Exit result = work(call);
    const int error = tools::flush_output();
    _exit(error == 0 ? result : fail_because(error, "standard output"));
  }
  int status = 0;
  while (waitpid(child, &status, 0) < 0)
    if (errno != EINTR) return fail_because(errno, "the work cannot be waited for");
  if (WIFSIGNALED(status)) return fail("an adapter crashed: %s", strsignal(WTERMSIG(status)));
  return static_cast<Exit>(WEXITSTATUS(status));
}

}  // namespace control
