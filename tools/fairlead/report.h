// What the control tool says on standard error.
#pragma once

#include "tools/fairlead/command.h"

namespace control {

// "fairlead: " and the text, as one line.
__attribute__((format(printf, 1, 2))) void complain(const char* format, ...);

// The same, with the way to the help. The results are kUsage, kFailed and kNothing.
__attribute__((format(printf, 1, 2))) Exit refuse(const char* format, ...);
__attribute__((format(printf, 1, 2))) Exit fail(const char* format, ...);
__attribute__((format(printf, 1, 2))) Exit nothing(const char* format, ...);

// As fail(), with the reason in `error` when there is one.
__attribute__((format(printf, 2, 3))) Exit fail_because(int error, const char* format, ...);

}  // namespace control
