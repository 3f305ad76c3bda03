// Rules: documents that tell what to add to another document, or what to remove from it.
#include "base/fail.h"
#include "fairlead/talk/edit.h"
#include "fairlead/talk/node.h"
#include "talk/name_index.h"
#include "talk/parallel_walk.h"
#include "talk/roles.h"

namespace {

using fairlead::fail;
using fairlead::is_vessel;

// A rule that names something inside; any other removes the member it names.
bool looks_inside(const axp_t* rule) { return is_vessel(rule->child) && rule->child->child; }

int prune(const vessel_t* rule, vessel_t* target) {
  int result = 0;
  fairlead::NameIndex index;
  fairlead::ParallelWalk walk(rule, target);
  while (const axp_t* member = walk.next()) {
    if (!fairlead::name_of(member)) continue;
    axp_t* const own = index.find(walk.side(), *member, walk.beside());
    if (!own) continue;
    walk.met(own);
    if (!looks_inside(member)) {
      index.removing(own);
      TalkFree(own);
      result = 1;
    } else if (is_vessel(own->child)) {
      walk.enter(member, own->child);
    }
  }
  return result;
}

}  // namespace

extern "C" int VesselAddRule(vessel_t* rule, vessel_t* target) {
  return VesselModify(rule, target);
}

extern "C" int VesselDeleteRule(vessel_t* rule, vessel_t* target) {
  if (!is_vessel(rule) || !is_vessel(target)) return fail<int>(EINVAL);
  return prune(rule, target);
}
