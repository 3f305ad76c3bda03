// The next of two objects' members, where it is certain that it is the one that is looked for.
#include "talk/in_step.h"

#include <bit>
#include <cstdint>

#include "talk/json/node.h"
#include "talk/roles.h"

namespace {

using fairlead::TextWord;

// With the first byte as the highest, as texts are ordered.
uint64_t as_number(TextWord word) { return __builtin_bswap64(word); }

// Whether a text is longer than another one, or as long and greater; both lie behind their records.
bool ascends(const char* from, const char* to) {
  bool greater = false, differ = false;
  while (true) {
    const TextWord before = fairlead::load_word(from), after = fairlead::load_word(to);
    const TextWord end_before = fairlead::nul_bytes(before), end_after = fairlead::nul_bytes(after);
    if (end_before || end_after) {
      if (!end_before || !end_after) return end_before != 0;
      const TextWord last = fairlead::bits_up_to_nul(before);
      if (last != fairlead::bits_up_to_nul(after)) return last < fairlead::bits_up_to_nul(after);
      return differ ? greater : as_number(before & last) < as_number(after & last);
    }
    if (!differ && before != after) {
      differ = true;
      greater = as_number(before) < as_number(after);
    }
    from += sizeof before;
    to += sizeof after;
  }
}

bool ascends(const json_t& member) {
  const json_t* const before = member.previous;
  if (!fairlead::has_inline_text(&member)) return false;
  return !before || (fairlead::has_inline_text(before) && ascends(before->text, member.text));
}

}  // namespace

json_t* fairlead::InStep::find(const json_t& wanted) {
  const State state = this->state();
  if (state == kStrayed || state == kUnordered || !named_as(next_, wanted)) return nullptr;
  if (state == kCounting) return is_new(*next_) ? next_ : nullptr;
  if (ascends(*next_)) return next_;
  set(kUnordered);
  return nullptr;
}

bool fairlead::InStep::begin_to_count() {
  if (state() != kUnordered) return false;
  set(kCounting);
  for (const json_t* member = next_->parent->child; member != next_; member = member->next)
    if (name_of(member) && !is_new(*member)) return false;
  return true;
}

bool fairlead::InStep::is_new(const json_t& member) {
  if (seen_.enter(member)) return true;
  stray();
  return false;
}
