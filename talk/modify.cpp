// Merging one document into another.
#include "base/fail.h"
#include "fairlead/talk/edit.h"
#include "fairlead/talk/node.h"
#include "talk/json/node.h"
#include "talk/member_copy.h"
#include "talk/name_index.h"
#include "talk/owned_talk.h"
#include "talk/parallel_walk.h"
#include "talk/roles.h"

namespace {

using fairlead::fail;
using fairlead::is_string_node;
using fairlead::is_vessel;
using fairlead::OwnedTalk;

class Merge {
 public:
  int objects(const vessel_t* source, vessel_t* target) {
    fairlead::ParallelWalk walk(source, target);
    while (const axp_t* member = walk.next()) {
      if (!fairlead::name_of(member)) continue;
      axp_t* const own = counterpart(walk, member);
      if (own && is_vessel(member->child) && is_vessel(own->child)) walk.enter(member, own->child);
    }
    return result_;
  }

  int members(const axp_t* source, axp_t* target) {
    take_over(source, target);
    if (is_vessel(source->child) && is_vessel(target->child))
      return objects(source->child, target->child);
    return result_;
  }

 private:
  // The member of that name, existing or new, with its value ready for what lies below. Null when
  // memory runs out.
  axp_t* counterpart(fairlead::ParallelWalk& walk, const axp_t* source) {
    vessel_t* const target = walk.side();
    axp_t* own = index_.find(target, *source, walk.beside());
    if (own) {
      walk.met(own);
      take_over(source, own);
      return own;
    }
    own = fairlead::member_copy(pool_, source);
    if (!own) return failed();
    fairlead::link_last(target, own);
    index_.appended(own);
    if (fairlead::is_render(source->child)) result_ = 1;
    return own;
  }

  // A string replaces any value, an object replaces what is none.
  void take_over(const axp_t* source, axp_t* own) {
    const talk_t* const value = source->child;
    const bool replaces =
        fairlead::is_render(value) || (is_vessel(value) && !is_vessel(own->child));
    if (!replaces) return;
    if (overwrites(own->child, value)) {
      result_ = 1;
      return;
    }
    OwnedTalk copy(fairlead::value_copy(pool_, value));
    if (!copy) {
      failed();
      return;
    }
    if (own->child) discard(own->child);
    fairlead::link_last(own, copy.release());
    result_ = 1;
  }

  // A string takes the place of another one where it has room: two thirds of a merge's time were
  // spent on making and freeing nodes.
  static bool overwrites(talk_t* old_value, const talk_t* value) {
    return fairlead::is_render(old_value) && fairlead::is_render(value) && value->text &&
           fairlead::overwrite_text(old_value, value->text);
  }

  // An object that the index may know keeps its address until the end: a new one in its place would
  // be taken for it.
  void discard(talk_t* value) {
    OwnedTalk owner(value);
    if (!is_vessel(value) || !index_.holds_objects()) return;
    if (!discarded_) discarded_.reset(json_new_array());
    if (!discarded_) return index_.give_up();
    fairlead::unlink_node(owner.get());
    fairlead::link_last(discarded_.get(), owner.release());
  }

  axp_t* failed() {
    result_ = -1;
    return nullptr;
  }

  fairlead::NodePool pool_{{}};
  fairlead::NameIndex index_;
  OwnedTalk discarded_;
  int result_ = 0;
};

}  // namespace

extern "C" int VesselModify(vessel_t* source, vessel_t* target) {
  if (!is_vessel(source) || !is_vessel(target)) return fail(EINVAL, -1);
  return Merge().objects(source, target);
}

extern "C" int AxpModify(axp_t* source, axp_t* target) {
  if (!is_string_node(source) || !is_string_node(target)) return fail(EINVAL, -1);
  return Merge().members(source, target);
}
