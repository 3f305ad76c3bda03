// Single-steps a child from system call to system call.
#include "support/killed_at.h"

#include <gtest/gtest.h>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

namespace fairlead_test {

bool killed_at(int stop, const std::function<void()>& action) {
  const pid_t child = fork();
  if (child == 0) {
    if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0) _exit(99);
    raise(SIGSTOP);
    action();
    _exit(0);
  }
  int status = 0;
  waitpid(child, &status, 0);
  EXPECT_TRUE(WIFSTOPPED(status)) << "the child cannot be traced";
  for (int seen = 0; WIFSTOPPED(status); ++seen) {
    if (seen == stop) {
      kill(child, SIGKILL);
      waitpid(child, &status, 0);
      return true;
    }
    ptrace(PTRACE_SYSCALL, child, nullptr, nullptr);
    waitpid(child, &status, 0);
  }
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
  return false;
}

}  // namespace fairlead_test
