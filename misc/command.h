// What the two ways to run a command share: its text, and the signal state in which it runs.
#pragma once

#include <csignal>
#include <initializer_list>

#include "base/bounded_text.h"
#include "base/signal_scope.h"

namespace fairlead {

// At most 4095 characters; the rest of a longer command is dropped.
using CommandText = FixedText<4096>;

// Interrupt and quit keys are for the command alone, and SIGCHLD must not reach a handler of the
// caller's that reaps. Everything is put back at the end.
class CommandSignals {
 public:
  CommandSignals()
      : quit_(SIGQUIT, SIG_IGN), interrupt_(SIGINT, SIG_IGN), child_(SIGCHLD, SIG_DFL) {}

  const MaskScope& mask() const { return mask_; }

  void put_back_handlers() const {
    quit_.put_back();
    interrupt_.put_back();
    child_.put_back();
  }

 private:
  HandlerScope quit_, interrupt_, child_;
  MaskScope mask_;  // last: the first to be put back
};

}  // namespace fairlead
