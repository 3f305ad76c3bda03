// Whether a document is read back as it is written.
#pragma once

#include "fairlead/talk/node.h"

namespace fairlead {

// False when a string or a number holds what is none in the text form, such as a bare double quote:
// texts are written as they are, so it would end the string there, and a reader would find other
// members, or no document at all. False, too, when a member has a second value.
bool is_readable(const talk_t* document);

// VesselFile, but for such a document: 0 with errno EINVAL, and the file stays as it was.
int save_readable(vessel_t* document, const char* path);

}  // namespace fairlead
