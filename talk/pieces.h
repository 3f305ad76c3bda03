// What paths and parameter lists do alike: trimming a text in place and choosing a piece by index.
#pragma once

#include <cstring>

#include "base/ascii.h"
#include "fairlead/talk/path.h"

namespace fairlead {

// Writes NULs over the white space at the end of the text, and gives its first character that is
// not a space. A text without any is not written to: it may be a literal.
inline char* trim(char* text) {
  for (char* end = text + strlen(text); end > text && is_white_space(end[-1]);) *--end = '\0';
  return skip(text, ' ');
}

// The slot of a 1-based index, -1 standing for `last`; -1 when there is no such piece.
inline int slot_of(int index, int last, int count) {
  const int chosen = index == -1 ? last : index;
  return chosen >= 1 && chosen <= count ? chosen - 1 : -1;
}

// False: memory ran out over an entry, so that the list lacks a parameter.
inline bool all_entries_made(const param_t& list) {
  for (int slot = 0; slot < list.count; ++slot)
    if (!list.entry[slot]) return false;
  return true;
}

}  // namespace fairlead
