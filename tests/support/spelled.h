// An answer as text, for comparing.
#pragma once

#include <cstdlib>
#include <string>

#include "fairlead/talk.h"

namespace fairlead_test {

// "null", "done", "failed", or the document's text; a document is freed.
inline std::string spelled(talk_t* answer) {
  if (!answer) return "null";
  if (answer == TALK_DONE) return "done";
  if (answer == TALK_FAILED) return "failed";
  char* text = TalkString(answer);
  const std::string result = text ? text : "no text form";
  free(text);
  TalkFree(answer);
  return result;
}

}  // namespace fairlead_test
