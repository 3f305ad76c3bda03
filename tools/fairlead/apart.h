// Work of others: adapters, and functions that print or may crash.
#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>

#include "base/descriptor.h"
#include "tools/fairlead/command.h"

namespace control {

// Sends what others print on standard output to standard error, where a program that reads the
// answer as JSON does not meet it.
class OutputApart {
 public:
  explicit OutputApart(const Call& call) {
    if (!call.options.json) return;
    fflush(stdout);
    kept_.reset(fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 3));
    if (kept_) dup2(STDERR_FILENO, STDOUT_FILENO);
  }
  ~OutputApart() {
    if (!kept_) return;
    fflush(stdout);
    dup2(kept_.get(), STDOUT_FILENO);
  }
  OutputApart(const OutputApart&) = delete;
  OutputApart& operator=(const OutputApart&) = delete;

 private:
  fairlead::Descriptor kept_;
};

// Lets a child process do it, so that an adapter that crashes there does not end the tool.
Exit guarded(const Call& call, Exit (*work)(const Call& call));

}  // namespace control
