// A pseudo-terminal, its link, and the pieces in which answers go out.
#include "tools/modem/line.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include "tools/modem/report.h"

namespace modem {
namespace {

constexpr int kStopSignals[] = {SIGTERM, SIGINT, SIGHUP};
constexpr int kPatience = 10000;  // milliseconds for a byte that ends a pause
constexpr int kLingerLooks = 200;
constexpr int kLookPause = 10;

// Written by the handler.
struct {
  volatile sig_atomic_t stopped;
  sigset_t waiting_mask;
} state;

void note_stop(int) { state.stopped = 1; }

timespec milliseconds_of(int count) { return {count / 1000, count % 1000 * 1000000L}; }

// Stop signals are let through here only, so that none is lost just before.
int wait_for(int fd, const timespec* limit) {
  pollfd input = {fd, POLLIN, 0};
  return ppoll(&input, fd < 0 ? 0 : 1, limit, &state.waiting_mask);
}

void nap(int milliseconds) {
  const timespec limit = milliseconds_of(milliseconds);
  wait_for(-1, &limit);
}

}  // namespace

void install_stop_signals() {
  sigset_t blocked;
  sigemptyset(&blocked);
  struct sigaction action = {};
  action.sa_handler = note_stop;
  for (int number : kStopSignals) {
    sigaddset(&blocked, number);
    sigaction(number, &action, nullptr);
  }
  sigprocmask(SIG_BLOCK, &blocked, &state.waiting_mask);
  for (int number : kStopSignals) sigdelset(&state.waiting_mask, number);
}

bool stopped() { return state.stopped != 0; }

Line::~Line() {
  if (linked_) unlink(options_.link);
}

bool Line::open() {
  if (!make_terminal()) {
    complain("no pseudo-terminal: %s", strerror(errno));
    return false;
  }
  if (options_.link && !make_link()) {
    complain("%s: %s", options_.link, strerror(errno));
    return false;
  }
  puts(name_.text());
  fflush(stdout);
  return true;
}

bool Line::make_terminal() {
  modem_.reset(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC));
  if (!modem_ || grantpt(modem_.get()) != 0 || unlockpt(modem_.get()) != 0) return false;
  char name[fairlead::kPathSize];
  if (ptsname_r(modem_.get(), name, sizeof name) != 0) return false;
  name_.add(name);
  device_.reset(::open(name, O_RDWR | O_NOCTTY | O_CLOEXEC));
  termios settings;
  if (!device_ || tcgetattr(device_.get(), &settings) != 0) return false;
  cfmakeraw(&settings);  // else the terminal itself would echo
  return tcsetattr(device_.get(), TCSANOW, &settings) == 0;
}

// A link that an earlier run left behind is replaced; anything else is not touched.
bool Line::make_link() {
  char old[8];
  if (readlink(options_.link, old, sizeof old) >= 0) unlink(options_.link);
  linked_ = symlink(name_.text(), options_.link) == 0;
  return linked_;
}

// A line feed behind the command, as some programs send it, is passed over.
const char* Line::hear() {
  command_.restart();
  while (!stopped()) {
    for (; heard_next_ < heard_length_; ++heard_next_) {
      const char c = heard_[heard_next_];
      if (c == '\r') {
        ++heard_next_;
        return command_.text();
      }
      if (c != '\n') command_.add(c);
    }
    if (wait_for(modem_.get(), nullptr) < 0) continue;
    const ssize_t got = read(modem_.get(), heard_, sizeof heard_);
    if (got <= 0) return nullptr;
    heard_length_ = static_cast<size_t>(got);
    heard_next_ = 0;
  }
  return nullptr;
}

void Line::begin_answer(int split_at) {
  split_at_ = split_at;
  said_ = 0;
  unheard_ = ignored_ = false;
  forget_steps();
}

// Those of the answer before, of which more pieces arrived than were sent.
void Line::forget_steps() const {
  const timespec now = {};
  char step;
  while (options_.step_fd >= 0 && wait_for(options_.step_fd, &now) == 1 &&
         read(options_.step_fd, &step, 1) == 1)
    continue;
}

void Line::say(const char* bytes, size_t length) {
  for (size_t i = 0; i < length; ++i) say_byte(bytes[i]);
}

void Line::say(const char* text) { say(text, strlen(text)); }

void Line::say_byte(char c) {
  if (pending_length_ == sizeof pending_) flush();
  pending_[pending_length_++] = c;
  if (++said_ == split_at_) pause(options_.pause);
}

void Line::finish_answer() {
  flush();
  if (said_ > longest_answer_) longest_answer_ = said_;
}

void Line::flush() {
  size_t sent = 0;
  while (sent < pending_length_) {
    const ssize_t count = write(modem_.get(), pending_ + sent, pending_length_ - sent);
    if (count <= 0) break;
    sent += static_cast<size_t>(count);
    unheard_ = true;
  }
  pending_length_ = 0;
}

void Line::pause(int milliseconds) {
  flush();
  if (options_.step_fd < 0)
    nap(milliseconds);
  else if (unheard_ && !wait_for_step())
    ignored_ = true;
  unheard_ = false;
}

bool Line::wait_for_step() const {
  const timespec limit = milliseconds_of(kPatience);
  char step;
  return wait_for(options_.step_fd, &limit) == 1 && read(options_.step_fd, &step, 1) == 1;
}

// What was said and not read would be lost with the terminal.
void Line::linger() {
  flush();
  for (int look = 0; look < kLingerLooks && !stopped(); ++look) {
    // On a busy machine it may still be on its way to the terminal, which poll brings to an end.
    const timespec now = {};
    wait_for(device_.get(), &now);
    int waiting = 0;
    if (ioctl(device_.get(), FIONREAD, &waiting) != 0 || waiting == 0) return;
    nap(kLookPause);
  }
}

}  // namespace modem
