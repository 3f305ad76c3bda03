// Names by their fingerprints, in one flat table.
#include "talk/seen_names.h"

#include <cstdint>
#include <cstdlib>
#include <utility>

#include "base/errno_keeper.h"
#include "talk/json/node.h"

namespace {

using fairlead::TextWord;

constexpr size_t kFirstCapacity = 128;
constexpr size_t kMostSteps = 8;  // per name; it takes one or two
constexpr auto kMultiplier = static_cast<TextWord>(0x9e3779b97f4a7c15);
constexpr size_t kHalfWord = 4 * sizeof(TextWord);

TextWord mix(TextWord print, TextWord word) {
  print = (print ^ word) * kMultiplier;
  return print ^ print >> kHalfWord;
}

// 0 where the text has a block of its own, and may end within a word.
TextWord fingerprint(const json_t& member) {
  if (!fairlead::has_inline_text(&member)) return 0;
  TextWord print = mix(0, reinterpret_cast<uintptr_t>(member.parent));
  for (const char* at = member.text;; at += fairlead::kTextWordSize) {
    const TextWord word = fairlead::load_word(at);
    print = mix(print, word & fairlead::bits_up_to_nul(word));
    if (fairlead::nul_bytes(word)) return print;
  }
}

}  // namespace

bool fairlead::SeenNames::enter(const json_t& member) {
  const TextWord print = fingerprint(member);
  if (print == 0 || given_up_) return false;
  if (count_ >= capacity_ / 4 * 3 && !grow()) return false;

  size_t at = print & (capacity_ - 1);
  for (; places_.get()[at] != 0; at = (at + 1) & (capacity_ - 1)) {
    if (places_.get()[at] == print) return false;
    ++steps_;
  }
  places_.get()[at] = print;
  ++count_;
  given_up_ = steps_ > kMostSteps * (count_ + kFirstCapacity);
  return true;
}

bool fairlead::SeenNames::grow() {
  const ErrnoKeeper keep;
  const size_t old_capacity = std::exchange(capacity_, capacity_ ? 2 * capacity_ : kFirstCapacity);
  const Owned<TextWord> old(places_.release());
  places_.reset(static_cast<TextWord*>(calloc(capacity_, sizeof(TextWord))));
  given_up_ = !places_;
  if (given_up_) return false;
  for (size_t i = 0; i < old_capacity; ++i)
    if (old.get()[i] != 0) put(old.get()[i]);
  return true;
}

void fairlead::SeenNames::put(TextWord print) {
  size_t at = print & (capacity_ - 1);
  while (places_.get()[at] != 0) at = (at + 1) & (capacity_ - 1);
  places_.get()[at] = print;
}
