// Starts the daemon, follows its file, ends it.
#include "support/syslog.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/inotify.h>
#include <sys/wait.h>
#include <syslog.h>
#include <unistd.h>

#include <chrono>
#include <csignal>

#include "support/device_test.h"

namespace fairlead_test {
namespace {

constexpr char kSocket[] = "/dev/log";
constexpr char kFile[] = "/tmp/.syslog/messages";

// Wakes up whenever something changes in a folder.
class Watch {
 public:
  explicit Watch(const char* folder) : fd_(inotify_init1(IN_CLOEXEC | IN_NONBLOCK)) {
    inotify_add_watch(fd_, folder, IN_CREATE | IN_MODIFY);
  }
  ~Watch() { close(fd_); }
  Watch(const Watch&) = delete;
  Watch& operator=(const Watch&) = delete;

  // True when the condition came true in time; it is looked at after every change.
  template <class Condition>
  bool until(Condition condition, int milliseconds) {
    using Clock = std::chrono::steady_clock;
    const auto end = Clock::now() + std::chrono::milliseconds(milliseconds);
    while (!condition()) {
      const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now());
      if (left.count() <= 0) return false;
      pollfd changed = {fd_, POLLIN, 0};
      poll(&changed, 1, static_cast<int>(left.count()));
      char events[4096];
      while (read(fd_, events, sizeof events) > 0) continue;
    }
    return true;
  }

 private:
  int fd_;
};

std::string line_with(const std::string& text, const std::string& piece) {
  const size_t at = text.find(piece);
  const size_t end = at == std::string::npos ? at : text.find('\n', at);
  if (end == std::string::npos) return "";
  const size_t before = text.rfind('\n', at);
  const size_t begin = before == std::string::npos ? 0 : before + 1;
  return text.substr(begin, end - begin);
}

}  // namespace

Syslog::Syslog() {
  remove_tree(kSocket);
  put_file(kFile, "");
  Watch watch("/dev");
  pid_ = fork();
  if (pid_ == 0) {
    execlp("busybox", "busybox", "syslogd", "-n", "-O", kFile, nullptr);
    _exit(127);
  }
  EXPECT_TRUE(watch.until([] { return exists(kSocket); }, 20000)) << "no syslog daemon";
}

Syslog::~Syslog() {
  closelog();
  if (pid_ <= 0) return;
  kill(pid_, SIGTERM);
  waitpid(pid_, nullptr, 0);
  remove_tree(kSocket);
}

std::string Syslog::wait_for(const std::string& piece, int milliseconds) {
  std::string line;
  Watch watch("/tmp/.syslog");
  watch.until([&] { return !(line = line_with(text(), piece)).empty(); }, milliseconds);
  return line;
}

std::string Syslog::text() const { return file_content(kFile); }

}  // namespace fairlead_test
