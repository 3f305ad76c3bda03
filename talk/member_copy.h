// The copy of one member without what lies below its value.
#pragma once

#include "fairlead/talk/node.h"
#include "talk/json/node.h"
#include "talk/owned_talk.h"
#include "talk/roles.h"

namespace fairlead {

// A string for a string, an empty object for anything else. Null when memory runs out.
inline talk_t* value_copy(const talk_t* value) {
  return is_render(value) ? RenderCreate(value->text) : VesselCreate();
}

// A member of the same name, which may be empty: read from text, such names exist.
inline axp_t* member_copy(const axp_t* member) {
  OwnedTalk copy(json_new_string(member->text));
  OwnedTalk value(value_copy(member->child));
  if (!copy || !value) return nullptr;
  link_last(copy.get(), value.release());
  return copy.release();
}

}  // namespace fairlead
