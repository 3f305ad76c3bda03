// Handlers, installed in one fixed way: never with a restart of interrupted calls.
#include <csignal>

#include "fairlead/misc/process.h"

namespace {

// A slow call that the signal interrupts fails with EINTR; every time-out of the library rests on
// that.
#ifdef SA_INTERRUPT
constexpr int kNoRestart = SA_INTERRUPT;
#else
constexpr int kNoRestart = 0x20000000;
#endif

}  // namespace

extern "C" signal_function_t signal_register(int signal_number, signal_function_t handler) {
  struct sigaction action = {};
  struct sigaction former;
  action.sa_handler = handler;
  action.sa_flags = kNoRestart;
  sigemptyset(&action.sa_mask);
  return sigaction(signal_number, &action, &former) == 0 ? former.sa_handler : SIG_ERR;
}

extern "C" void signal_handler(int) {}
