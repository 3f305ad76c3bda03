// Actions in a forked child: for what ends, crashes or changes its process.
#pragma once

#include <sys/types.h>

#include <functional>
#include <memory>
#include <string>

namespace fairlead_test {

struct Ended {
  int status = -1;  // exit status, -1 when a signal ended the child
  int signal = 0;   // the signal that ended it, 0 when it left by itself
  std::string out;  // what it and its descendants wrote until it ended
  std::string err;
};

// An event between processes: whoever was forked after the gate was made can open it.
class Gate {
 public:
  Gate();
  ~Gate();
  Gate(const Gate&) = delete;
  Gate& operator=(const Gate&) = delete;

  void open();
  bool wait(int milliseconds = 20000);  // false: not opened in time

 private:
  int ends_[2];
};

// A child that runs beside the test. Its action ends it by returning; a value is its exit status.
// An expectation that fails in the child fails the test when the child is waited for, or ended.
class Child {
 public:
  explicit Child(std::function<int()> action);
  ~Child();  // ends the child when nobody waited for it
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;

  pid_t pid() const { return pid_; }
  void send(int signal_number) const;
  Ended wait();

 private:
  struct Streams;
  std::unique_ptr<Streams> streams_;
  pid_t pid_;
};

// Runs an action, with or without a status, in a child and waits for its end.
template <class Action>
Ended run_child(Action action) {
  return Child([&action]() -> int {
           if constexpr (std::is_void_v<decltype(action())>) {
             action();
             return 0;
           } else {
             return static_cast<int>(action());
           }
         })
      .wait();
}

}  // namespace fairlead_test
