// The level words the library itself uses; they set the convention for every caller of LogWrite.
#pragma once

#include <cstdint>

#include "fairlead/log.h"

namespace fairlead {

inline constexpr uint32_t kError = 3;
inline constexpr uint32_t kWarning = 4;
inline constexpr uint32_t kDebug = 7;
inline constexpr uint32_t kErrorWithErrno = LOG_ERRNO | kError;
inline constexpr uint32_t kWarningWithErrno = LOG_ERRNO | kWarning;
// Always with the message "out of memory"; ends the process.
inline constexpr uint32_t kOutOfMemory = LOG_EXIT | LOG_NOMEM | LOG_ERRNO | 1;
// An information that must reach syslog and the console, whatever the channel's mode is.
inline constexpr uint32_t kNotice = LOG_MODE_SYSLOG | LOG_MODE_CONSOLE | 6;

}  // namespace fairlead
