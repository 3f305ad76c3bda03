// Letters changed in place, and a bounded copy.
#include <cerrno>
#include <cstring>

#include "base/ascii.h"
#include "base/fail.h"
#include "fairlead/misc/encoders.h"

extern "C" char* string_copy(char* destination, const char* source, int size) {
  if (!destination || !source || size < 1) return fairlead::fail<char*>(EINVAL);
  const size_t room = static_cast<size_t>(size) - 1;
  const size_t length = strnlen(source, room);
  memcpy(destination, source, length);
  memset(destination + length, 0, room - length + 1);
  return destination;
}

extern "C" void lowtoupp(char* text) {
  if (!text) return fairlead::fail<void>(EINVAL);
  for (; *text; ++text) *text = fairlead::to_upper(*text);
}

extern "C" void upptolow(char* text) {
  if (!text) return fairlead::fail<void>(EINVAL);
  for (; *text; ++text) *text = fairlead::to_lower(*text);
}
