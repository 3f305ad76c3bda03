// Deep copies.
#include "base/fail.h"
#include "fairlead/talk/edit.h"
#include "fairlead/talk/node.h"
#include "talk/json/node.h"
#include "talk/member_copy.h"
#include "talk/owned_talk.h"
#include "talk/parallel_walk.h"
#include "talk/roles.h"

namespace {

using fairlead::fail;
using fairlead::is_vessel;
using fairlead::NodePool;
using fairlead::OwnedTalk;

// Numbers, arrays, literals and members without a value have no copy.
bool has_copy(const axp_t* member) {
  if (!fairlead::name_of(member)) return false;
  const talk_t* value = member->child;
  return is_vessel(value) || (fairlead::is_render(value) && value->text);
}

// False when memory runs out.
bool copy_members(NodePool& pool, const vessel_t* vessel, vessel_t* copy) {
  fairlead::ParallelWalk walk(vessel, copy);
  while (const axp_t* member = walk.next()) {
    if (!has_copy(member)) continue;
    axp_t* const own = fairlead::member_copy(pool, member);
    if (!own) return false;
    fairlead::link_last(walk.side(), own);
    if (is_vessel(member->child)) walk.enter(member, own->child);
  }
  return true;
}

}  // namespace

extern "C" vessel_t* VesselDup(vessel_t* vessel) {
  if (!is_vessel(vessel)) return fail<vessel_t*>(EINVAL);
  NodePool pool({});
  OwnedTalk copy(VesselCreate());
  if (!copy || !copy_members(pool, vessel, copy.get())) return nullptr;
  return copy.release();
}

extern "C" axp_t* AxpDup(axp_t* member) {
  if (!fairlead::is_axp(member) || !has_copy(member)) return fail<axp_t*>(EINVAL);
  NodePool pool({});
  OwnedTalk copy(fairlead::member_copy(pool, member));
  if (!copy) return nullptr;
  if (is_vessel(member->child) && !copy_members(pool, member->child, copy->child)) return nullptr;
  return copy.release();
}

extern "C" talk_t* TalkDup(talk_t* talk) {
  if (!talk) return fail<talk_t*>(EINVAL);
  if (is_vessel(talk)) return VesselDup(talk);
  if (fairlead::is_render(talk)) return RenderCreate(talk->text);
  return fairlead::is_axp(talk) ? AxpDup(talk) : nullptr;
}
