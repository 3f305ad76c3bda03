// One exchange: the command goes out, the reply comes in piece by piece until the parser is
// content.
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>

#include "atcmd/defaults.h"
#include "atcmd/log_lines.h"
#include "atcmd/results.h"
#include "atcmd/signals.h"
#include "base/alarm_scope.h"
#include "base/bounded_text.h"
#include "base/fail.h"
#include "fairlead/atcmd.h"
#include "fairlead/misc/process.h"
#include "log/level_words.h"

namespace {

using namespace fairlead::atcmd;
using fairlead::AlarmPause;
using fairlead::AlarmScope;
using fairlead::fail;
using fairlead::kDebug;
using fairlead::kErrorWithErrno;

constexpr int kWriteSeconds = 10;

using CommandLine = fairlead::FixedText<1024>;

class Exchange {
 public:
  Exchange(atcmd_t& atcmd, const char* command, int seconds, const char* expect, uint32_t flags)
      : atcmd_(atcmd),
        command_(command),
        seconds_(seconds),
        expect_(expect),
        flags_(flags ? flags : atcmd.default_flags) {}

  int run() {
    Step step = has_command() ? Step::kWrite : Step::kMakeRoom;
    while (step != Step::kOver) step = take(step);
    return result_;
  }

  bool has_command() const { return command_ && *command_; }

 private:
  enum class Step { kWrite, kMakeRoom, kWait, kRead, kParse, kOver };

  Step take(Step step) {
    switch (step) {
      case Step::kWrite:
        return write_command();
      case Step::kMakeRoom:
        return make_room();
      case Step::kWait:
        return wait();
      case Step::kRead:
        return read_piece();
      case Step::kParse:
        return parse();
      case Step::kOver:
        break;
    }
    return Step::kOver;
  }

  Step end(int result) {
    result_ = result;
    return Step::kOver;
  }

  Step write_command() {
    CommandLine line;
    line.format("%s\r\n", command_);
    const auto length = static_cast<int>(line.length());
    if (flags_ & ATCMD_TRACE)
      LogWrite(kDebug, kSource, kSentLine, "%d <<< (%s)", atcmd_.fd, line.text());

    const auto written = static_cast<int>(write_in_time(line));
    if (written == length) return Step::kMakeRoom;
    report_signals();
    if (written < 0) {
      LogWrite(kErrorWithErrno, kSource, kWriteErrorLine, "write( %d, %s, %d ) return error(%d)",
               atcmd_.fd, line.text(), length, written);
      return end(kFailed);
    }
    errno = 0;
    LogWrite(kErrorWithErrno, kSource, kShortWriteLine, "write( %d, %s, %d ) return failed(%d)",
             atcmd_.fd, line.text(), length, written);
    flush();
    return end(kNegative);
  }

  // Waits while the device holds the line back, and not longer than the alarm lets it.
  ssize_t write_in_time(const CommandLine& line) const {
    AlarmPause callers_alarm;
    AlarmScope alarm(kWriteSeconds);
    fd_block(atcmd_.fd);
    const ssize_t written = write(atcmd_.fd, line.text(), line.length());
    fairlead::ErrnoKeeper keep;
    fd_nonblock(atcmd_.fd);
    return written;
  }

  // A callback may have changed the length, to anything.
  Step make_room() {
    if (atcmd_.received_length >= 0 && atcmd_.received_length < kRoom) return Step::kWait;
    flush();
    empty_buffer();
    return end(kNegative);
  }

  Step wait() {
    pollfd line = {atcmd_.fd, POLLIN, 0};
    const timespec limit = {seconds_, 0};
    const int ready = wait_unless_caught(line, limit);
    if (ready > 0) return Step::kRead;
    if (ready == 0) {
      flush();
      return end(kTimedOut);
    }
    report_signals();
    LogWrite(kErrorWithErrno, kSource, kWaitErrorLine, "select( %d, %p, NULL, NULL, %p ) error",
             atcmd_.fd + 1, static_cast<void*>(&line), static_cast<const void*>(&limit));
    return end(kFailed);
  }

  // The signals are let through by the wait itself: one that comes just before ends it all the
  // same.
  int wait_unless_caught(pollfd& line, const timespec& limit) const {
    const sigset_t all = all_but({});
    sigprocmask(SIG_SETMASK, &all, nullptr);
    int ready = last_signal() ? fail(EINTR, -1) : ppoll(&line, 1, &limit, &atcmd_.send_mask);
    if (ready > 0 && line.revents & POLLNVAL) ready = fail(EBADF, -1);
    sigprocmask(SIG_SETMASK, &atcmd_.send_mask, nullptr);
    return ready;
  }

  Step read_piece() {
    const int room = kRoom - atcmd_.received_length;
    char* const end_of_text = atcmd_.receive_buffer + atcmd_.received_length;
    const ssize_t got = read(atcmd_.fd, end_of_text, static_cast<size_t>(room));
    if (got < 0) return read_failed(room);
    if (got == 0) {
      flush();
      empty_buffer();
      return end(kHungUp);
    }
    end_of_text[got] = '\0';
    atcmd_.received_length += static_cast<int>(got);
    if (flags_ & ATCMD_TRACE)
      LogWrite(kDebug, kSource, kReceivedLine, "%d >>%d>> (%s)", atcmd_.fd, atcmd_.received_length,
               atcmd_.receive_buffer);
    return Step::kParse;
  }

  Step read_failed(int room) {
    if (errno == EAGAIN || errno == EINPROGRESS) return Step::kMakeRoom;
    report_signals();
    LogWrite(kErrorWithErrno, kSource, kReadErrorLine, "read( %d, %s, %d ) error", atcmd_.fd,
             atcmd_.receive_buffer, room);
    return end(kFailed);
  }

  Step parse() {
    if (has_command()) atcmd_.notify(&atcmd_, command_);
    const int verdict = atcmd_.parser(&atcmd_, command_, expect_, flags_);
    switch (verdict) {
      case kPositive:
      case kNegative:
        atcmd_.notify(&atcmd_, nullptr);
        return end(verdict);
      case kFailed:
      case kBadHandle:
        return end(verdict);
      default:
        return Step::kMakeRoom;
    }
  }

  void flush() const { tcflush(atcmd_.fd, TCIOFLUSH); }

  void empty_buffer() {
    atcmd_.received_length = 0;
    atcmd_.receive_buffer[0] = '\0';
  }

  atcmd_t& atcmd_;
  const char* command_;
  int seconds_;
  const char* expect_;
  uint32_t flags_;
  int result_ = kFailed;
};

int run_guarded(atcmd_t& atcmd, Exchange& exchange) {
  forget_signals();
  SendHandlers handlers;
  MaskInForce mask(atcmd, atcmd.send_mask, kSendMaskLine, kSendUnmaskLine);
  return exchange.run();
}

}  // namespace

extern "C" int atcmd_send(atcmd_t* atcmd, const char* command, int seconds, const char* expect,
                          uint32_t flags) {
  if (!atcmd || atcmd->fd < 0) return fail<int>(EINVAL, kBadHandle);
  Exchange exchange(*atcmd, command, seconds, expect, flags);
  if (exchange.has_command()) atcmd->notify(atcmd, nullptr);

  const int result = run_guarded(*atcmd, exchange);
  if (const int signal_number = take_signal()) {
    LogWrite(fairlead::kError, kSource, kSendSignalLine, "receive %d signal at fd(%d) send",
             signal_number, atcmd->fd);
    return fail<int>(EINTR, kFailed);
  }
  return result;
}

extern "C" const char* atcmd_lastack(atcmd_t* atcmd) {
  return atcmd ? atcmd->last_acknowledgement : fail<const char*>(EINVAL);
}
