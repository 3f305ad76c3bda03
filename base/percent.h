// Text that is already formatted and, where callers have come to rely on it, taken for a format
// once more.
#pragma once

namespace fairlead {

// What a second formatting without arguments would safely do: "%%" becomes "%", everything else
// stays.
inline void halve_percent(char* text) {
  char* to = text;
  for (const char* from = text; *from; ++from) {
    if (from[0] == '%' && from[1] == '%') ++from;
    *to++ = *from;
  }
  *to = '\0';
}

}  // namespace fairlead
