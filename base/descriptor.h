// Owns a file descriptor and closes it on every way out, with errno kept.
#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

namespace fairlead {

class Descriptor {
 public:
  Descriptor() = default;
  explicit Descriptor(int fd) : fd_(fd) {}
  Descriptor(Descriptor&& other) noexcept : fd_(other.release()) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    if (this != &other) reset(other.release());
    return *this;
  }
  ~Descriptor() { reset(); }

  explicit operator bool() const { return fd_ >= 0; }
  int get() const { return fd_; }
  int release() { return std::exchange(fd_, -1); }

  void reset(int fd = -1) {
    if (fd_ >= 0) {
      const int before = errno;
      // Not retried on EINTR: Linux has released the number by then. And errno is not written for
      // nothing: beside a forked child that takes a page.
      if (close(fd_) != 0) errno = before;
    }
    fd_ = fd;
  }

 private:
  int fd_ = -1;
};

// The same file, close-on-exec, under a number that no standard stream has: where those are closed,
// what a program prints would end up in it. Empty with errno when no number is left.
inline Descriptor beside_standard(Descriptor file) {
  if (!file || file.get() > STDERR_FILENO) return file;
  return Descriptor(fcntl(file.get(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
}

}  // namespace fairlead
