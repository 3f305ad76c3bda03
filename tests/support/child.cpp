// Forks, redirects, waits, and carries failed expectations over to the parent.
#include "support/child.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

#include "support/capture.h"

namespace fairlead_test {
namespace {

// The parent of a child cannot see its failures, so each leaves a mark in a file both share.
class FailureMark : public testing::EmptyTestEventListener {
 public:
  explicit FailureMark(int fd) : fd_(fd) {}

 private:
  void OnTestPartResult(const testing::TestPartResult& result) override {
    if (result.failed() && write(fd_, "x", 1) != 1) _exit(99);
  }

  int fd_;
};

int wait_for_end(pid_t pid) {
  int status = 0;
  while (waitpid(pid, &status, 0) < 0)
    if (errno != EINTR) return -1;
  return status;
}

}  // namespace

Gate::Gate() {
  if (pipe2(ends_, O_CLOEXEC) != 0) abort();
}

Gate::~Gate() {
  close(ends_[0]);
  close(ends_[1]);
}

void Gate::open() {
  if (write(ends_[1], "x", 1) != 1) abort();
}

bool Gate::wait(int milliseconds) {
  pollfd poll_in = {ends_[0], POLLIN, 0};
  return poll(&poll_in, 1, milliseconds) == 1 && poll_in.revents & POLLIN;
}

struct Child::Streams {
  void tell_failures() const {
    if (!failures.text().empty())
      ADD_FAILURE() << "an expectation failed in the child:\n" << out.text();
  }

  Recording out, err, failures;
};

Child::Child(std::function<int()> action) : streams_(std::make_unique<Streams>()) {
  fflush(nullptr);
  pid_ = fork();
  if (pid_ != 0) return;
  streams_->out.take_over(STDOUT_FILENO);
  streams_->err.take_over(STDERR_FILENO);
  testing::UnitTest::GetInstance()->listeners().Append(new FailureMark(streams_->failures.fd()));
  const int status = action();
  fflush(nullptr);
  _exit(status);
}

Child::~Child() {
  if (pid_ <= 0) return;
  send(SIGKILL);
  wait_for_end(pid_);
  streams_->tell_failures();
}

void Child::send(int signal_number) const {
  if (pid_ > 0) kill(pid_, signal_number);
}

Ended Child::wait() {
  Ended ended;
  if (pid_ <= 0) {
    ADD_FAILURE() << "no child to wait for";
    return ended;
  }
  const int status = wait_for_end(pid_);
  pid_ = 0;
  if (WIFEXITED(status)) ended.status = WEXITSTATUS(status);
  if (WIFSIGNALED(status)) ended.signal = WTERMSIG(status);
  ended.out = streams_->out.text();
  ended.err = streams_->err.text();
  streams_->tell_failures();
  return ended;
}

}  // namespace fairlead_test
