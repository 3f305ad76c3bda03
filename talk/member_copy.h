// The copy of one member without what lies below its value.
#pragma once

#include "base/fail.h"
#include "fairlead/talk/node.h"
#include "talk/json/node.h"
#include "talk/json/node_pool.h"
#include "talk/owned_talk.h"
#include "talk/roles.h"

namespace fairlead {

// A string for a string, an empty object for anything else. Null for a string without a text, and
// when memory runs out.
inline talk_t* value_copy(NodePool& pool, const talk_t* value) {
  if (!is_render(value)) return pool.node(JSON_OBJECT);
  return value->text ? pool.string_like(*value) : fail<talk_t*>(EINVAL);
}

// A member of the same name, which may be empty: read from text, such names exist.
inline axp_t* member_copy(NodePool& pool, const axp_t* member) {
  OwnedTalk copy(pool.string_like(*member));
  OwnedTalk value(value_copy(pool, member->child));
  if (!copy || !value) return nullptr;
  link_last(copy.get(), value.release());
  return copy.release();
}

}  // namespace fairlead
