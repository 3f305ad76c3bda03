// Closes a device and leaves its line as it was found.
#include <cerrno>

#include "atcmd/line.h"
#include "atcmd/log_lines.h"
#include "atcmd/signals.h"
#include "base/alarm_scope.h"
#include "base/fail.h"
#include "base/owned.h"
#include "fairlead/atcmd.h"
#include "fairlead/misc/process.h"
#include "log/level_words.h"

namespace {

using namespace fairlead::atcmd;
using fairlead::AlarmPause;
using fairlead::AlarmScope;

constexpr int kCloseSeconds = 5;

void close_line(atcmd_t& atcmd) {
  AlarmPause callers_alarm;
  forget_signals();
  DeviceHandlers handlers;
  MaskInForce mask(atcmd, atcmd.open_mask, kCloseMaskLine, kCloseUnmaskLine);
  AlarmScope alarm(kCloseSeconds);
  put_settings_back(atcmd.fd, When::kDrained);
  lock_close(atcmd.fd);
}

}  // namespace

extern "C" int atcmd_close(atcmd_t* atcmd) {
  if (!atcmd) return fairlead::fail<int>(EINVAL);
  const fairlead::Owned<atcmd_t> owned(atcmd);
  if (atcmd->fd < 0) return 1;

  close_line(*atcmd);
  if (const int signal_number = take_signal()) {
    LogWrite(fairlead::kError, kSource, kCloseSignalLine, "receive %d signal at fd(%d) close",
             signal_number, atcmd->fd);
    return fairlead::fail<int>(EINTR);
  }
  LogWrite(fairlead::kDebug, kSource, kClosedLine, "close the fd(%d) succeed", atcmd->fd);
  return 1;
}
