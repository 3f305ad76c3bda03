// Tells names that are new from those that may have been seen before.
#pragma once

#include <cstddef>

#include "base/owned.h"
#include "fairlead/talk/json.h"
#include "talk/json/text_word.h"

namespace fairlead {

// A set of fingerprints of members' names. Different fingerprints prove that names differ, so that
// "new" is certain. All else is not: without memory, and where somebody chose names whose
// fingerprints fall together, nothing is new any more.
class SeenNames {
 public:
  // Enters the name of a member. True when no other member of the same object has entered it.
  bool enter(const json_t& member);

 private:
  bool grow();
  void put(TextWord print);

  Owned<TextWord> places_;  // 0 is an empty place
  size_t capacity_ = 0;     // a power of two
  size_t count_ = 0;
  size_t steps_ = 0;  // beyond the place where a fingerprint belongs
  bool given_up_ = false;
};

}  // namespace fairlead
