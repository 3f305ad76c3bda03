// Two objects walked in step: the place in the second one.
#pragma once

#include <cstddef>

#include "fairlead/talk/json.h"
#include "talk/seen_names.h"

namespace fairlead {

// As documents that are compared or merged mostly name their members in the same order, the member
// that is looked for mostly is the next one. It is the first of its name when all before it were
// met one after the other and no name came twice. Names that ascend, as those of numbered or sorted
// members do, are known to differ from each other; others are counted, but for small objects, where
// a look from the front takes less.
class InStep {
 public:
  // The member that comes next if both objects have the same names, or null.
  json_t* next() const { return next_; }

  void met(const json_t* member) {
    if (member != next_) stray();
    next_ = member ? member->next : nullptr;
  }

  // Some member of the present object was not met in its turn.
  bool strayed() const { return state() == kStrayed; }
  void stray() { set(kStrayed); }

  void enter(const json_t* vessel) {
    next_ = vessel->child;
    ++level_;
    set(kAscending);
  }

  // Back to the object that holds this member.
  void leave(const json_t* member) {
    next_ = member->next;
    --level_;
  }

  // The next member if it is certainly the first that is named as `wanted`, else null.
  json_t* find(const json_t& wanted);

  // From the next member on the present object's names are counted. False when that is of no use.
  bool begin_to_count();

 private:
  enum State : size_t { kAscending, kUnordered, kCounting, kStrayed };

  // Of the level of the present object; the deepest ones have all strayed.
  State state() const {
    return level_ < kLevels ? static_cast<State>(states_ >> 2 * level_ & 3) : kStrayed;
  }
  void set(State state) {
    if (level_ < kLevels) states_ = (states_ & ~(size_t{3} << 2 * level_)) | state << 2 * level_;
  }
  bool is_new(const json_t& member);

  static constexpr size_t kLevels = 4 * sizeof(size_t);
  json_t* next_ = nullptr;
  size_t level_ = 0;
  size_t states_ = 0;
  SeenNames seen_;
};

}  // namespace fairlead
