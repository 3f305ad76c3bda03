// The name of the object that a call addresses: the record wins over the text.
#pragma once

#include "fairlead/talk/path.h"

namespace fairlead {

inline const char* object_name(slash_t* object, const char* object_text) {
  return object ? SlashString(object) : object_text;
}

}  // namespace fairlead
