// Comparing documents, whatever the order of their members.
#include <cstdint>
#include <cstring>

#include "fairlead/talk/edit.h"
#include "talk/name_index.h"
#include "talk/roles.h"

namespace {

using fairlead::is_vessel;
using fairlead::name_of;

bool same_text(const talk_t* a, const talk_t* b) {
  const char* text_a = name_of(a);
  const char* text_b = name_of(b);
  return text_a && text_b && strcmp(text_a, text_b) == 0;
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

// A mark for each level of objects around the present one; the deepest are always marked.
class LevelMarks {
 public:
  bool marked() const { return depth_ >= kLevels || (bits_ >> depth_ & 1) != 0; }
  void mark() {
    if (depth_ < kLevels) bits_ |= uint32_t{1} << depth_;
  }
  void enter() {
    ++depth_;
    if (depth_ < kLevels) bits_ &= ~(uint32_t{1} << depth_);
  }
  void leave() { --depth_; }

 private:
  static constexpr size_t kLevels = 32;
  size_t depth_ = 0;
  uint32_t bits_ = 0;
};

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
        disorder_.mark();
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
    const char* name = name_of(&member);
    if (!name) return false;
    const axp_t* const first_a = second_round_ ? index_.find(a_, name) : &member;
    const axp_t* const first_b = index_.find(b_, name);
    if (!second_round_) meet(first_b);
    if (second_round_ && first_a && first_b == &member) return true;  // the first round's pair

    const talk_t* a = value_of(first_a);
    const talk_t* b = value_of(second_round_ ? &member : first_b);
    const Verdict verdict = judge(a, b);
    if (verdict == Verdict::kObjects) enter(a, b);
    return verdict != Verdict::kUnequal;
  }

  // The first round has come to this member of b.
  void meet(const axp_t* member_b) {
    if (member_b != to_meet_) disorder_.mark();
    to_meet_ = member_b ? member_b->next : nullptr;
  }

  bool met_all() const { return !to_meet_ && !disorder_.marked(); }

  void enter(const vessel_t* a, const vessel_t* b) {
    a_ = a;
    b_ = b;
    member_ = a->child;
    second_round_ = false;
    to_meet_ = b->child;
    disorder_.enter();
  }

  // Back to the members under which the two objects lie. Only the second round compares a member
  // of b that is not the first of its name.
  void leave() {
    const axp_t* const member_a = member_above(a_);
    const axp_t* const member_b = member_above(b_);
    a_ = member_a->parent;
    b_ = member_b->parent;
    disorder_.leave();
    second_round_ = disorder_.marked() && index_.find(b_, member_b->text) != member_b;
    member_ = (second_round_ ? member_b : member_a)->next;
    to_meet_ = member_b->next;
  }

  fairlead::NameIndex index_;
  const vessel_t* const top_a_;
  const vessel_t* const top_b_;
  const vessel_t* a_ = nullptr;
  const vessel_t* b_ = nullptr;
  const axp_t* member_ = nullptr;   // the next one to compare, of a or in the second round of b
  const axp_t* to_meet_ = nullptr;  // of b, if the first round meets its members in order
  LevelMarks disorder_;             // where it does not, and where the second round has begun
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
