// The settings of a serial line: raw while the device is open, then as they were found.
#pragma once

namespace fairlead::atcmd {

// Raw, with the given speed, and keeps what it found. False when the settings could not be read.
bool make_raw(int fd, int speed);

// Puts the kept settings back: once all output is sent and without what lies in the line unread, or
// at once.
enum class When { kDrained, kNow };
void put_settings_back(int fd, When when);

}  // namespace fairlead::atcmd
