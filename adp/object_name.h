// The name of the object that a call addresses: the record wins over the text.
#pragma once

#include <cerrno>

#include "adp/log_source.h"
#include "fairlead/talk/path.h"
#include "log/level_words.h"

namespace fairlead {

inline const char* object_name(slash_t* object, const char* object_text) {
  return object ? SlashString(object) : object_text;
}

// The same for a call that cannot do without: null, logged, with errno EINVAL.
inline const char* required_object_name(slash_t* object, const char* object_text) {
  const char* name = object_name(object, object_text);
  if (name) return name;
  LogWrite(kError, kAdpSource, __LINE__, "argument error");
  errno = EINVAL;
  return nullptr;
}

}  // namespace fairlead
