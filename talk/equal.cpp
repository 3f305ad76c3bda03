// Comparing documents, whatever the order of their members.
#include "fairlead/talk/edit.h"
#include "talk/in_step.h"
#include "talk/json/node.h"
#include "talk/name_index.h"
#include "talk/roles.h"

namespace {

using fairlead::is_vessel;
using fairlead::name_of;

bool same_text(const talk_t* a, const talk_t* b) {
  return name_of(a) && name_of(b) && fairlead::same_text(*a, *b);
}

enum class Verdict { kEqual, kUnequal, kObjects };

// What one look tells. Two objects are left to be compared member by member; where they are the
// values of members that were given, they take the members' place.
Verdict judge(const talk_t*& a, const talk_t*& b) {
  while (true) {
    if (a == b) return Verdict::kEqual;
    if (is_vessel(a) && is_vessel(b)) return Verdict::kObjects;
    if (!same_text(a, b)) return Verdict::kUnequal;
    if (!fairlead::is_axp(a)) break;
    a = a->child;
    b = b->child;
  }
  return fairlead::is_render(a) && fairlead::is_render(b) ? Verdict::kEqual : Verdict::kUnequal;
}

const talk_t* value_of(const axp_t* member) { return member ? member->child : nullptr; }

// The member of an object under which a value lies.
const axp_t* member_above(const talk_t* value) {
  const talk_t* node = value->parent;
  while (!is_vessel(node->parent)) node = node->parent;
  return node;
}

// Two objects at a time, in two rounds: each member of the first object against the other's first
// namesake, then those of the other that the first round has not met. There are none when it has
// met them one after the other, as in most documents that are equal. The way back from inner
// objects is found by the parent links, not on the stack.
class Comparison {
 public:
  Comparison(const vessel_t* a, const vessel_t* b) : top_a_(a), top_b_(b) { enter(a, b); }

  bool equal() {
    while (true) {
      if (member_) {
        if (!compare(*member_)) return false;
      } else if (!second_round_ && !met_all()) {
        second_round_ = true;
        to_meet_.stray();
        member_ = b_->child;
      } else if (a_ == top_a_ && b_ == top_b_) {
        return true;
      } else {
        leave();
      }
    }
  }

 private:
  // False when its value differs; goes on with the next member or with the values' own members.
  bool compare(const axp_t& member) {
    member_ = member.next;
    if (!name_of(&member)) return false;
    const axp_t* const first_a = second_round_ ? index_.find(a_, member) : &member;
    const axp_t* const first_b = index_.find(b_, member, to_meet_);
    if (!second_round_) to_meet_.met(first_b);
    if (second_round_ && first_a && first_b == &member) return true;  // the first round's pair

    const talk_t* a = value_of(first_a);
    const talk_t* b = value_of(second_round_ ? &member : first_b);
    const Verdict verdict = judge(a, b);
    if (verdict == Verdict::kObjects) enter(a, b);
    return verdict != Verdict::kUnequal;
  }

  bool met_all() const { return !to_meet_.next() && !to_meet_.strayed(); }

  void enter(const vessel_t* a, const vessel_t* b) {
    a_ = a;
    b_ = b;
    member_ = a->child;
    second_round_ = false;
    to_meet_.enter(b);
  }

  // Back to the members under which the two objects lie. Only the second round compares a member
  // of b that is not the first of its name.
  void leave() {
    const axp_t* const member_a = member_above(a_);
    const axp_t* const member_b = member_above(b_);
    a_ = member_a->parent;
    b_ = member_b->parent;
    to_meet_.leave(member_b);
    second_round_ = to_meet_.strayed() && index_.find(b_, *member_b) != member_b;
    member_ = (second_round_ ? member_b : member_a)->next;
  }

  fairlead::NameIndex index_;
  const vessel_t* const top_a_;
  const vessel_t* const top_b_;
  const vessel_t* a_ = nullptr;
  const vessel_t* b_ = nullptr;
  const axp_t* member_ = nullptr;  // the next one to compare, of a or in the second round of b
  fairlead::InStep to_meet_;       // of b; strayed from that once the second round has begun
  bool second_round_ = false;
};

}  // namespace

extern "C" int TalkEqual(const talk_t* a, const talk_t* b) {
  switch (judge(a, b)) {
    case Verdict::kEqual:
      return 1;
    case Verdict::kUnequal:
      return 0;
    default:
      return Comparison(a, b).equal() ? 1 : 0;
  }
}
