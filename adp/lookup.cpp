// From an object path to the adapter that serves it.
#include <cstring>

#include "base/bounded_text.h"
#include "fairlead/adp/project.h"
#include "talk/path_choice.h"

extern "C" int AdpPath(slash_t* path, const char* text, char* buffer, int size) {
  fairlead::PathChoice choice(path, text, fairlead::kPathSize - 1);
  if (choice.count() == 0) return -1;

  int code = ADP_PURE;
  if (DynAdpPath(choice.get(), buffer, size))
    code = ADP_DYN;
  else if (ProjectAdpPath(choice.get(), buffer, size))
    code = ADP_PRJ;
  if (!buffer || size < 1) return code;
  if (code == ADP_PURE) {
    buffer[0] = '\0';
    return code;
  }
  // The one sign of a script is the last letter of its extension.
  const size_t length = strlen(buffer);
  return length > 0 && buffer[length - 1] == 'h' ? ADP_SHELL : code;
}
