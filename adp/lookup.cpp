// From an object path to the adapter that serves it.
#include <cerrno>
#include <cstring>

#include "base/bounded_text.h"
#include "base/result_buffer.h"
#include "fairlead/adp/project.h"
#include "talk/path_choice.h"

extern "C" int AdpPath(slash_t* path, const char* text, char* buffer, int size) {
  fairlead::PathChoice choice(path, text, fairlead::kPathSize - 1);
  if (choice.count() == 0) return -1;

  char own[fairlead::kPathSize];
  const fairlead::ResultBuffer file = fairlead::choose_buffer(buffer, size, own);
  const int room = static_cast<int>(file.size);
  int code = ADP_PURE;
  const int before = errno;
  errno = 0;
  if (DynAdpPath(choice.get(), file.text, room))
    code = ADP_DYN;
  else if (errno != ENOMEM && ProjectAdpPath(choice.get(), file.text, room))
    code = ADP_PRJ;
  // What could not be looked for may be there: the store must not serve in its place.
  const bool unknown = code == ADP_PURE && errno == ENOMEM;
  if (errno == 0) errno = before;
  if (code == ADP_PURE) {
    file.text[0] = '\0';
    return unknown ? -1 : code;
  }
  // The one sign of a script is the last letter of its extension.
  const size_t length = strlen(file.text);
  return length > 0 && file.text[length - 1] == 'h' ? ADP_SHELL : code;
}
