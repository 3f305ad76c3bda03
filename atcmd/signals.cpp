// Catches signals, keeps the last, and tells the log about them once it is safe to.
#include "atcmd/signals.h"

#include <cstddef>
#include <iterator>

#include "atcmd/log_lines.h"
#include "log/level_words.h"

namespace fairlead::atcmd {
namespace {

constexpr int kCaught[] = {SIGHUP, SIGALRM, SIGTERM, SIGINT, SIGQUIT, SIGPIPE};

// Written by the handler, so one copy for the process: one operation at a time. A flag per signal,
// since one handler may interrupt another.
struct {
  volatile sig_atomic_t last;
  volatile sig_atomic_t unreported[std::size(kCaught)];
} state;

}  // namespace

// The message has to wait: written from here, it could interrupt another one half written and wait
// for that one's lock for ever.
void catch_signal(int signal_number) {
  state.last = signal_number;
  for (size_t i = 0; i < std::size(kCaught); ++i)
    if (kCaught[i] == signal_number) state.unreported[i] = 1;
}

void forget_signals() {
  state.last = 0;
  for (auto& flag : state.unreported) flag = 0;
}

int last_signal() { return state.last; }

void report_signals() {
  for (size_t i = 0; i < std::size(kCaught); ++i) {
    if (!state.unreported[i]) continue;
    state.unreported[i] = 0;
    LogWrite(kError, kSource, kSignalLine, "atcmd receive the signal(%d)", kCaught[i]);
  }
}

int take_signal() {
  report_signals();
  const int signal_number = state.last;
  state.last = 0;
  return signal_number;
}

sigset_t all_but(std::initializer_list<int> signal_numbers) {
  sigset_t mask;
  sigfillset(&mask);
  for (int number : signal_numbers) sigdelset(&mask, number);
  return mask;
}

MaskInForce::MaskInForce(atcmd_t& atcmd, const sigset_t& mask, int set_line, int restore_line)
    : saved_(atcmd.saved_mask), restore_line_(restore_line) {
  if (sigprocmask(SIG_SETMASK, &mask, &atcmd.saved_mask) == 0) return;
  LogWrite(kErrorWithErrno, kSource, set_line, "sigprocmask error");
  sigprocmask(SIG_SETMASK, nullptr, &atcmd.saved_mask);
}

MaskInForce::~MaskInForce() {
  ErrnoKeeper keep;
  if (sigprocmask(SIG_SETMASK, &saved_, nullptr) != 0)
    LogWrite(kErrorWithErrno, kSource, restore_line_, "sigprocmask error");
}

}  // namespace fairlead::atcmd
