// A walk over a document with another one at its side, whatever their depth: the way back is found
// by the parent links, not on the stack.
#pragma once

#include "fairlead/talk/json.h"
#include "talk/in_step.h"

namespace fairlead {

// Visits the members of an object, and those of each object it is told to enter. The other object
// follows: `side` is where the members belong that are visited now.
class ParallelWalk {
 public:
  ParallelWalk(const json_t* vessel, json_t* side)
      : top_(vessel), vessel_(vessel), next_(vessel->child), side_(side) {
    if (kByWords) beside_.enter(side);
  }

  // The next member, or null when all are done. It is the caller's to remove.
  const json_t* next() {
    while (!next_ && vessel_ != top_) leave();
    const json_t* member = next_;
    if (member) next_ = member->next;
    return member;
  }

  json_t* side() const { return side_; }

  // Where in the side the member may be that was visited last; told by `met` where it was found.
  // Followed only where a look-up by words makes use of it.
  InStep& beside() { return beside_; }
  void met(const json_t* member) {
    if (kByWords) beside_.met(member);
  }

  // Goes on with the object below the member that was visited last; `side` must be an object below
  // a member of the present side.
  void enter(const json_t* member, json_t* side) {
    vessel_ = member->child;
    next_ = vessel_->child;
    side_ = side;
    if (kByWords) beside_.enter(side);
  }

 private:
  void leave() {
    const json_t* member = vessel_->parent;
    vessel_ = member->parent;
    next_ = member->next;
    if (kByWords) beside_.leave(side_->parent);
    side_ = side_->parent->parent;
  }

  const json_t* top_;
  const json_t* vessel_;
  const json_t* next_;
  json_t* side_;
  InStep beside_;
};

}  // namespace fairlead
