// The signal state in which a command is run and waited for; everything is put back at the end.
#pragma once

#include <csignal>
#include <initializer_list>

#include "base/signal_scope.h"

namespace fairlead {

// Interrupt and quit keys are for the command alone; SIGCHLD must not be eaten by a handler of the
// caller's.
class CommandSignals {
 public:
  // `opened`: the signals that get through while the command runs.
  explicit CommandSignals(std::initializer_list<int> opened)
      : quit_(SIGQUIT, SIG_IGN), interrupt_(SIGINT, SIG_IGN), child_(SIGCHLD, SIG_DFL) {
    sigset_t mask = mask_.former();
    for (int number : opened) sigdelset(&mask, number);
    sigprocmask(SIG_SETMASK, &mask, nullptr);
  }

  // What the child does before it becomes the command.
  void put_back_in_child() const {
    quit_.put_back();
    interrupt_.put_back();
    child_.put_back();
    sigprocmask(SIG_SETMASK, &mask_.former(), nullptr);
  }

 private:
  HandlerScope quit_, interrupt_, child_;
  MaskScope mask_;  // last: the first to be put back
};

}  // namespace fairlead
