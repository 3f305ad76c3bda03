// Opens a device: locked, raw, after one second without DTR.
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>

#include "atcmd/defaults.h"
#include "atcmd/line.h"
#include "atcmd/log_lines.h"
#include "atcmd/signals.h"
#include "base/alarm_scope.h"
#include "base/fail.h"
#include "base/owned.h"
#include "fairlead/atcmd.h"
#include "fairlead/misc/process.h"
#include "log/level_words.h"
#include "log/out_of_memory.h"

namespace {

using namespace fairlead::atcmd;
using fairlead::AlarmPause;
using fairlead::AlarmScope;
using fairlead::fail;
using fairlead::kDebug;
using fairlead::kError;
using fairlead::Owned;

constexpr int kOpenSeconds = 5;
constexpr int kLockSeconds = 1;
constexpr mode_t kMode = 0660;
constexpr timespec kWithoutDtr = {1, 0};
constexpr uint32_t kDefaultFlags = ATCMD_TRACE | ATCMD_ECHO;

Owned<atcmd_t> make_handle(atcmd_parser_t parser, atcmd_notify_t notify, uint32_t default_flags) {
  Owned<atcmd_t> atcmd = fairlead::zeroed<atcmd_t>();
  if (!atcmd) return fairlead::out_of_memory<Owned<atcmd_t>>(kSource, kMemoryLine);
  atcmd->fd = -1;
  atcmd->parser = parser ? parser : default_parser;
  atcmd->notify = notify ? notify : default_notify;
  atcmd->default_flags = default_flags ? default_flags : kDefaultFlags;
  atcmd->open_mask = all_but({SIGHUP, SIGALRM, SIGTERM, SIGINT, SIGQUIT, SIGPIPE});
  atcmd->send_mask = all_but({SIGHUP, SIGALRM, SIGTERM});
  sigemptyset(&atcmd->saved_mask);
  return atcmd;
}

// True when the line has other settings now than before.
bool set_up(int fd, int speed) {
  serial_setdtr(fd, 0);
  const bool changed = make_raw(fd, speed);
  nanosleep(&kWithoutDtr, nullptr);  // a signal cuts it short
  serial_setdtr(fd, 1);
  return changed;
}

bool open_line(atcmd_t& atcmd, const char* path, int flags, int speed) {
  AlarmPause callers_alarm;
  forget_signals();
  DeviceHandlers handlers;
  MaskInForce mask(atcmd, atcmd.open_mask, kOpenMaskLine, kOpenUnmaskLine);
  AlarmScope alarm(kOpenSeconds);
  LogWrite(kDebug, kSource, kOpeningLine, "try to open the device(%s)", path);
  atcmd.fd = lock_open(path, flags, kMode, kLockSeconds);
  return atcmd.fd >= 0 && set_up(atcmd.fd, speed);
}

// No alarm runs any more, so nothing here may wait: a close waits for output that is still to go.
void give_up(atcmd_t& atcmd, bool settings_changed) {
  if (atcmd.fd < 0) return;
  tcflush(atcmd.fd, TCIOFLUSH);
  if (settings_changed) put_settings_back(atcmd.fd, When::kNow);
  close(atcmd.fd);
}

}  // namespace

extern "C" atcmd_t* atcmd_open(const char* path, int flags, int speed, atcmd_parser_t parser,
                               atcmd_notify_t notify, uint32_t default_flags) {
  if (!path || !*path) {
    LogWrite(kDebug, kSource, kNoPathLine, "cannot atcmd_open a null path");
    return fail<atcmd_t*>(EINVAL);
  }
  Owned<atcmd_t> atcmd = make_handle(parser, notify, default_flags);
  if (!atcmd) return nullptr;

  const bool settings_changed = open_line(*atcmd, path, flags, speed);
  if (const int signal_number = take_signal()) {
    LogWrite(kError, kSource, kOpenSignalLine, "receive %d signal at device(%s) open",
             signal_number, path);
    give_up(*atcmd, settings_changed);
    return fail<atcmd_t*>(EINTR);
  }
  if (atcmd->fd < 0) return nullptr;
  LogWrite(kDebug, kSource, kOpenedLine, "open the device(%s) succeed", path);
  return atcmd.release();
}
