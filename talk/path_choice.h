// The path that a call addresses: the caller's record, or else a text that is parsed into a record
// of its own.
#pragma once

#include <cstddef>
#include <cstdint>

#include "base/errno_keeper.h"
#include "base/owned.h"
#include "fairlead/talk/path.h"

namespace fairlead {

class PathChoice {
 public:
  // The record wins; both null address the whole object. At most `limit` characters of the text
  // count.
  PathChoice(slash_t* record, const char* text, size_t limit = SIZE_MAX) : chosen_(record) {
    if (!record && text) analyse(text, limit);
  }
  ~PathChoice() {
    ErrnoKeeper keep;
    if (parsed()) SlashClear(&own_);
  }
  PathChoice(const PathChoice&) = delete;
  PathChoice& operator=(const PathChoice&) = delete;

  bool usable() const { return usable_; }           // false: no memory for the copy
  bool parsed() const { return chosen_ == &own_; }  // the text was used, not the caller's record
  slash_t* get() { return chosen_; }                // null: the whole object
  int count() const { return chosen_ ? chosen_->count : 0; }

 private:
  void analyse(const char* text, size_t limit);

  slash_t own_;
  char short_copy_[128];
  OwnedText long_copy_;
  slash_t* chosen_;
  bool usable_ = true;
};

}  // namespace fairlead
