// The fixed raw settings of a line.
#include "atcmd/line.h"

#include <termios.h>

#include "atcmd/log_lines.h"
#include "fairlead/atcmd.h"
#include "log/level_words.h"

namespace fairlead::atcmd {
namespace {

constexpr tcflag_t kInputCleared = INLCR | IGNCR | ICRNL;
constexpr tcflag_t kOutputCleared = OPOST | ONLCR | OCRNL | OFDEL;
constexpr tcflag_t kLocalCleared = ISIG | ICANON | ECHO | ECHOE;
constexpr tcflag_t kControlSet = CS8 | CREAD | HUPCL | CLOCAL | CRTSCTS;
// CBAUDEX belongs to the code of the speeds from 57600 on. Cleared after the speed was set, it
// leaves them on the low speed with the same lower bits. The products in the field are set up for
// that, so it stays.
constexpr tcflag_t kControlCleared =
    CSIZE | CSTOPB | PARENB | PARODD | HUPCL | CBAUDEX | static_cast<tcflag_t>(CRTSCTS);

static_assert(kInputCleared == 0x1C0 && kOutputCleared == 0x8D && kLocalCleared == 0x1B);
static_assert(~kControlCleared == 0x7FFFE88F && kControlSet == 0x80000CB0);

// One copy for the process, of the latest device that was opened: all handles share it, and the
// programs on the devices open one.
struct {
  bool found;
  termios settings;
} state;

void set_speed(termios& settings, int speed) {
  const speed_t code = serial_n2speed(speed);
  if (code == 0) return;
  cfsetospeed(&settings, code);
  cfsetispeed(&settings, code);
}

void set_raw(termios& settings) {
  settings.c_iflag &= ~kInputCleared;
  settings.c_oflag &= ~kOutputCleared;
  settings.c_cflag &= ~kControlCleared;
  settings.c_cflag |= kControlSet;
  settings.c_lflag &= ~kLocalCleared;
  settings.c_cc[VMIN] = 1;
  settings.c_cc[VTIME] = 0;
}

}  // namespace

bool make_raw(int fd, int speed) {
  termios settings;
  if (tcgetattr(fd, &settings) != 0) {
    LogWrite(kErrorWithErrno, kSource, kSettingsLine, "tcgetattr tty(%d) error", fd);
    return false;
  }
  state.settings = settings;
  state.found = true;
  set_speed(settings, speed);
  set_raw(settings);
  tcsetattr(fd, TCSAFLUSH, &settings);
  return true;
}

void put_settings_back(int fd, When when) {
  if (state.found) tcsetattr(fd, when == When::kDrained ? TCSAFLUSH : TCSANOW, &state.settings);
}

}  // namespace fairlead::atcmd
