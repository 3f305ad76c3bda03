// Objects: adding, replacing and removing members.
#include "base/fail.h"
#include "fairlead/talk/node.h"
#include "talk/owned_talk.h"
#include "talk/roles.h"

namespace {

using fairlead::fail;
using fairlead::is_vessel;
using fairlead::may_be_linked;
using fairlead::OwnedTalk;

}  // namespace

extern "C" int VesselAdd(vessel_t* vessel, axp_t* member) {
  if (!is_vessel(vessel) || !may_be_linked(member, vessel)) return fail<int>(EINVAL);
  if (json_insert_child(vessel, member) != JSON_DONE) return fail<int>(EINVAL);
  return 1;
}

extern "C" int VesselSet(vessel_t* vessel, axp_t* member) {
  const char* name = AxpGet(member);
  if (!name || !may_be_linked(member, vessel)) return fail<int>(EINVAL);
  axp_t* const namesake = VesselFind(vessel, name);
  if (namesake) TalkFree(namesake);
  return VesselAdd(vessel, member);
}

extern "C" int VesselSetX(vessel_t* vessel, const char* name, talk_t* value) {
  if (!is_vessel(vessel) || !value) return fail<int>(EINVAL);
  axp_t* const found = VesselFind(vessel, name);
  if (found) return AxpSetX(found, value);
  return VesselAdd(vessel, AxpCreate(name, value));  // refuses nothing but a missing member
}

extern "C" int VesselSetS(vessel_t* vessel, const char* name, const char* text) {
  OwnedTalk value(RenderCreate(text));
  if (!value || !VesselSetX(vessel, name, value.get())) return 0;
  value.release();
  return 1;
}

extern "C" axp_t* VesselSplit(vessel_t* vessel, axp_t* member) {
  if (!is_vessel(vessel)) return fail<axp_t*>(EINVAL);
  return json_detach_child(vessel, member) ? member : nullptr;
}

extern "C" int VesselDelete(vessel_t* vessel, axp_t* member) {
  OwnedTalk split(VesselSplit(vessel, member));
  return split ? 1 : 0;
}

extern "C" axp_t* VesselCut(vessel_t* vessel, const char* name) {
  return VesselSplit(vessel, VesselFind(vessel, name));
}

extern "C" int VesselClear(vessel_t* vessel, const char* name) {
  return VesselDelete(vessel, VesselFind(vessel, name));
}

extern "C" int VesselClearX(vessel_t* vessel, const char* name) {
  return AxpClearX(VesselFind(vessel, name));
}

extern "C" talk_t* VesselCutX(vessel_t* vessel, const char* name) {
  return AxpCutX(VesselFind(vessel, name));
}
