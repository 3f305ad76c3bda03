// Names that lead out of the folder they are looked up in.
#pragma once

#include <cstring>
#include <string_view>

namespace fairlead {

// Whether a segment of the name is "..". Names come from outside, and what they lead to is loaded,
// removed or written over.
inline bool leads_up(const char* name) {
  while (*(name += strspn(name, "/")) != '\0') {
    const std::string_view segment(name, strcspn(name, "/"));
    if (segment == "..") return true;
    name += segment.size();
  }
  return false;
}

}  // namespace fairlead
