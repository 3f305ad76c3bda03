// The document in a small file that is going to be changed and saved again.
#pragma once

#include "fairlead/talk/text.h"
#include "talk/file_text.h"
#include "talk/owned_talk.h"

namespace fairlead {

// An empty document for a file that is missing or damaged: the save replaces it. Empty owner, with
// errno, when it is unknown what the file holds, and it must stay as it is.
inline OwnedTalk read_to_change(const char* file) {
  OwnedTalk document(FileVessel(file));
  if (!document && !content_unknown()) document.reset(VesselCreate());
  return document;
}

}  // namespace fairlead
