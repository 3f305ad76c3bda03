// Walking a document along a slash path.
#include "talk/member_path.h"

#include "fairlead/talk/node.h"
#include "talk/owned_talk.h"
#include "talk/roles.h"

namespace fairlead {
namespace {

// The object that the member holds; another value is replaced by an empty object.
vessel_t* object_of(axp_t* member) {
  talk_t* value = AxpGetX(member);
  if (is_vessel(value)) return value;
  OwnedTalk empty(VesselCreate());
  return empty && AxpSetX(member, empty.get()) ? empty.release() : nullptr;
}

axp_t* append_member(vessel_t* object, const char* name) {
  OwnedTalk empty(VesselCreate());
  if (!empty) return nullptr;
  OwnedTalk member(AxpCreate(name, empty.get()));
  if (!member) return nullptr;
  (void)empty.release();  // the member's now
  return VesselAdd(object, member.get()) ? member.release() : nullptr;
}

axp_t* make_member(talk_t* document, slash_t* path) {
  vessel_t* object = document;
  axp_t* member = nullptr;
  for (int index = 1; index <= path->count; ++index) {
    if (member) object = object_of(member);
    if (!object) return nullptr;
    const char* name = SlashGet(path, index);
    member = VesselGet(object, name);
    if (!member) member = append_member(object, name);
    if (!member) return nullptr;
  }
  return member;
}

}  // namespace

talk_t* find_at(talk_t* document, const slash_t* path, int depth) {
  talk_t* node = document;
  for (int index = 1; node && index <= depth; ++index)
    node = VesselGetX(node, SlashGet(path, index));
  return node;
}

bool put_at(talk_t* document, slash_t* path, talk_t* value) {
  if (path->count < 1 || !is_vessel(document)) return false;
  axp_t* member = make_member(document, path);
  return member && AxpSetX(member, value) == 1;
}

bool remove_at(talk_t* document, slash_t* path) {
  if (path->count < 1 || !is_vessel(document)) return false;
  talk_t* object = find_at(document, path, path->count - 1);
  return is_vessel(object) && VesselClear(object, SlashGet(path, -1)) == 1;
}

talk_t* cut_at(talk_t* document, slash_t* path) {
  talk_t* object = find_at(document, path, path->count - 1);
  return object ? VesselCutX(object, SlashGet(path, -1)) : nullptr;
}

}  // namespace fairlead
