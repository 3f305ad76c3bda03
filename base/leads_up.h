// Names that lead out of the folder they are looked up in.
#pragma once

namespace fairlead {

// Whether a segment of the name is "..". Names come from outside, and what they lead to is loaded,
// removed or written over.
inline bool leads_up(const char* name) {
  for (char before = '/'; *name != '\0'; before = *name++)
    if (before == '/' && name[0] == '.' && name[1] == '.' && (name[2] == '/' || name[2] == '\0'))
      return true;
  return false;
}

}  // namespace fairlead
