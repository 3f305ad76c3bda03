// Objects: walking their members and finding one by name.
#include "base/fail.h"
#include "fairlead/talk/node.h"
#include "talk/roles.h"

namespace {

using fairlead::fail;
using fairlead::is_vessel;

// The rule of both walks: a null position begins at `begin`, any other steps along `link`.
axp_t* step(vessel_t* vessel, axp_t* position, axp_t* json_t::*begin, axp_t* json_t::*link) {
  if (!is_vessel(vessel)) return fail<axp_t*>(EINVAL);
  if (!vessel->child) return nullptr;
  if (!position) return vessel->*begin;
  if (position->parent != vessel) return fail<axp_t*>(EINVAL);
  return position->*link;
}

}  // namespace

extern "C" vessel_t* VesselCreate(void) { return json_new_object(); }

extern "C" axp_t* VesselEach(vessel_t* vessel, axp_t* previous) {
  return step(vessel, previous, &json_t::child, &json_t::next);
}

extern "C" axp_t* VesselTurn(vessel_t* vessel, axp_t* next) {
  return step(vessel, next, &json_t::child_end, &json_t::previous);
}

extern "C" int VesselCount(vessel_t* vessel) {
  int count = 0;
  for (axp_t* member = VesselEach(vessel, nullptr); member; member = member->next) ++count;
  return count;
}

extern "C" axp_t* VesselFind(vessel_t* vessel, const char* name) {
  if (!is_vessel(vessel)) return fail<axp_t*>(EINVAL);
  return fairlead::first_named(vessel->child, name);
}

extern "C" axp_t* VesselGet(vessel_t* vessel, const char* name) { return VesselFind(vessel, name); }

extern "C" talk_t* VesselGetX(vessel_t* vessel, const char* name) {
  return AxpGetX(VesselFind(vessel, name));
}

extern "C" const char* VesselGetS(vessel_t* vessel, const char* name) {
  return AxpGetS(VesselFind(vessel, name));
}
