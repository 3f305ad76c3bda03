// Whether a plain text can stand between the quotes of a configuration file.
#pragma once

#include <cctype>
#include <cstring>

namespace tools {

// The end of the escape sequence whose backslash stands at `at`, or null when it is none.
inline const char* escape_end(const char* at) {
  if (at[1] != 'u') return at[1] && strchr(R"("\/bfnrt)", at[1]) ? at + 2 : nullptr;
  for (int i = 2; i < 6; ++i)
    if (!isxdigit(static_cast<unsigned char>(at[i]))) return nullptr;
  return at + 6;
}

inline bool storable(const char* text) {
  while (*text) {
    if (*text == '"') return false;
    text = *text == '\\' ? escape_end(text) : text + 1;
    if (!text) return false;
  }
  return true;
}

}  // namespace tools
