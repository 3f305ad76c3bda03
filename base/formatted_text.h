// A printf-style text of any length in a block of its own.
#pragma once

#include <cstdarg>
#include <cstdio>

#include "base/owned.h"

namespace fairlead {

// Measures before it allocates. Empty owner when the format is refused or memory runs out.
// `length`, when wanted, is the formatter's: a NUL that came from "%c" counts.
__attribute__((format(printf, 1, 0))) inline OwnedText format_text(const char* pattern,
                                                                   va_list arguments,
                                                                   size_t* length = nullptr) {
  va_list measured;
  va_copy(measured, arguments);
  const int wanted = vsnprintf(nullptr, 0, pattern, measured);
  va_end(measured);
  if (wanted < 0) return {};

  if (length) *length = static_cast<size_t>(wanted);
  const size_t size = static_cast<size_t>(wanted) + 1;
  OwnedText text(static_cast<char*>(malloc(size)));
  if (text) vsnprintf(text.get(), size, pattern, arguments);
  return text;
}

}  // namespace fairlead
