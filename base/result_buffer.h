// The choice that functions with a text result share: the caller's buffer, or a static one of their
// own.
#pragma once

#include <cstddef>

#include "base/bounded_text.h"

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

// The text, cut where the room ends. The last byte is a NUL too, for callers that rely on it after
// a cut without looking for the end of the text.
inline char* put_result(const ResultBuffer& result, const char* text) {
  result.text[result.size - 1] = '\0';
  return BoundedText(result.text, result.size).add(text).text();
}

}  // namespace fairlead
