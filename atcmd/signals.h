// The signals that end an operation on the line, and the process' signal state while one runs.
#pragma once

#include <csignal>

#include "base/signal_scope.h"
#include "fairlead/atcmd.h"

namespace fairlead::atcmd {

void forget_signals();  // at the beginning of an operation
int last_signal();      // caught since then, 0 when none
void report_signals();  // logs each that was caught and not yet logged
int take_signal();      // reports, and gives the last signal, which is then forgotten

// The handler of all of them.
void catch_signal(int signal_number);

// During an exchange. Each member keeps the caller's action and puts it back.
class SendHandlers {
  HandlerScope oldhup_{SIGHUP, catch_signal};
  HandlerScope oldalrm_{SIGALRM, catch_signal};
  HandlerScope oldterm_{SIGTERM, catch_signal};
};

// While the device is opened or closed.
class DeviceHandlers {
  SendHandlers common_;
  HandlerScope oldint_{SIGINT, catch_signal};
  HandlerScope oldquit_{SIGQUIT, catch_signal};
  HandlerScope oldpipe_{SIGPIPE, catch_signal};
};

// A mask that lets these through only.
sigset_t all_but(std::initializer_list<int> signal_numbers);

// One of the handle's masks in force; its saved mask keeps the caller's. `set_line` and
// `restore_line` are named when the system refuses.
class MaskInForce {
 public:
  MaskInForce(atcmd_t& atcmd, const sigset_t& mask, int set_line, int restore_line);
  ~MaskInForce();
  MaskInForce(const MaskInForce&) = delete;
  MaskInForce& operator=(const MaskInForce&) = delete;

 private:
  const sigset_t& saved_;
  int restore_line_;
};

}  // namespace fairlead::atcmd
