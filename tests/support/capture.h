// What an action in this process writes to its standard streams.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>
#include <string>

namespace fairlead_test {

// A file without a name that takes what is written to one of the standard descriptors.
class Recording {
 public:
  Recording() : file_(memfd_create("recording", MFD_CLOEXEC)) {}
  ~Recording() { close(file_); }
  Recording(const Recording&) = delete;
  Recording& operator=(const Recording&) = delete;

  int fd() const { return file_; }
  void take_over(int fd) { dup2(file_, fd); }

  std::string text() const {
    std::string text;
    char piece[4096];
    for (ssize_t got;
         (got = pread(file_, piece, sizeof piece, static_cast<off_t>(text.size()))) > 0;)
      text.append(piece, static_cast<size_t>(got));
    return text;
  }

 private:
  int file_;
};

struct Captured {
  std::string out;
  std::string err;
};

template <class Action>
Captured capture(Action action) {
  fflush(nullptr);
  Recording out, err;
  const int saved_out = dup(STDOUT_FILENO), saved_err = dup(STDERR_FILENO);
  out.take_over(STDOUT_FILENO);
  err.take_over(STDERR_FILENO);
  action();
  fflush(nullptr);
  dup2(saved_out, STDOUT_FILENO);
  dup2(saved_err, STDERR_FILENO);
  close(saved_out);
  close(saved_err);
  return {out.text(), err.text()};
}

}  // namespace fairlead_test
