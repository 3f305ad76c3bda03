// Speeds and the DTR line of a serial device.
#include <sys/ioctl.h>
#include <termios.h>

#include "atcmd/log_lines.h"
#include "fairlead/atcmd.h"
#include "log/level_words.h"

namespace {

struct Speed {
  int bits_per_second;
  speed_t code;
};

constexpr Speed kSpeeds[] = {
    {50, B50},         {75, B75},         {110, B110},     {134, B134},     {150, B150},
    {200, B200},       {300, B300},       {600, B600},     {1200, B1200},   {1800, B1800},
    {2400, B2400},     {4800, B4800},     {9600, B9600},   {19200, B19200}, {38400, B38400},
    {57600, B57600},   {115200, B115200}, {19200, B19200}, {38400, B38400}, {230400, B230400},
    {460800, B460800}, {921600, B921600}, {0, 0},
};

}  // namespace

extern "C" speed_t serial_n2speed(int speed) {
  if (speed == 0) return 0;
  for (const Speed* entry = kSpeeds; entry->bits_per_second != 0; ++entry)
    if (entry->bits_per_second == speed) return entry->code;
  LogWrite(fairlead::kError, fairlead::atcmd::kSource, fairlead::atcmd::kSpeedLine,
           "speed %d not supported", speed);
  return 0;
}

extern "C" int serial_setdtr(int fd, int on) {
  const int lines = TIOCM_DTR;
  return ioctl(fd, on ? TIOCMBIS : TIOCMBIC, &lines);
}
