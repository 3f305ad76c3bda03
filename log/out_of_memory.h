// The report of a failed allocation. It ends the process, unless the log threshold filters it out:
// the caller then fails like any other function.
#pragma once

#include <cerrno>

#include "base/fail.h"
#include "log/level_words.h"

namespace fairlead {

template <class T>
T out_of_memory(const char* source, int line = __builtin_LINE()) {
  LogWrite(kOutOfMemory, source, line, "out of memory");
  return fail<T>(ENOMEM);
}

}  // namespace fairlead
