// The choice that functions with a text result share: the caller's buffer, or a static one of their
// own.
#pragma once

#include <cstddef>

namespace fairlead {

struct ResultBuffer {
  char* text;
  size_t size;
};

// The caller's buffer when there is one with room for at least a terminator, else `fallback`.
template <size_t N>
ResultBuffer choose_buffer(char* buffer, int size, char (&fallback)[N]) {
  if (buffer && size > 0) return {buffer, static_cast<size_t>(size)};
  return {fallback, N};
}

}  // namespace fairlead
