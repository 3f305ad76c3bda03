// Scopes for what a call changes in the process' signal state: handlers and mask. Each puts back
// what it found.
#pragma once

#include <csignal>
#include <initializer_list>

#include "base/errno_keeper.h"
#include "fairlead/misc/process.h"

namespace fairlead {

// Installs a handler by `signal_register` and puts the former action back whole: flags, mask and a
// handler with information included.
class HandlerScope {
 public:
  HandlerScope(int signal_number, signal_function_t handler) : signal_number_(signal_number) {
    sigaction(signal_number_, nullptr, &former_);
    signal_register(signal_number_, handler);
  }
  ~HandlerScope() {
    ErrnoKeeper keep;
    put_back();
  }
  HandlerScope(const HandlerScope&) = delete;
  HandlerScope& operator=(const HandlerScope&) = delete;

  // For a forked child, which leaves the block without its destructors.
  void put_back() const { sigaction(signal_number_, &former_, nullptr); }

 private:
  int signal_number_;
  struct sigaction former_ = {};
};

// Remembers the signal mask and puts it back.
class MaskScope {
 public:
  MaskScope() { sigprocmask(SIG_SETMASK, nullptr, &former_); }
  ~MaskScope() {
    ErrnoKeeper keep;
    put_back();
  }
  MaskScope(const MaskScope&) = delete;
  MaskScope& operator=(const MaskScope&) = delete;

  // Blocks what was blocked before, except for these.
  void let_through(std::initializer_list<int> signal_numbers) const {
    sigset_t mask = former_;
    for (int number : signal_numbers) sigdelset(&mask, number);
    sigprocmask(SIG_SETMASK, &mask, nullptr);
  }

  void block_all() const {
    sigset_t mask;
    sigfillset(&mask);
    sigprocmask(SIG_SETMASK, &mask, nullptr);
  }

  void put_back() const { sigprocmask(SIG_SETMASK, &former_, nullptr); }

  const sigset_t& former() const { return former_; }

 private:
  sigset_t former_;
};

}  // namespace fairlead
