// The path that a call addresses: the caller's record, or else a text that is parsed into a record
// of its own.
#pragma once

#include <cstring>

#include "base/errno_keeper.h"
#include "base/owned.h"
#include "fairlead/talk/path.h"

namespace fairlead {

class PathChoice {
 public:
  // The record wins; both null address the whole object. At most `limit` characters of the text
  // count.
  PathChoice(slash_t* record, const char* text, size_t limit = SIZE_MAX) : chosen_(record) {
    if (record || !text) return;
    copy_.reset(strndup(text, limit));
    if (!copy_) {
      usable_ = false;
      return;
    }
    SlashAnalysis(&own_, copy_.get());
    chosen_ = &own_;
  }
  ~PathChoice() {
    ErrnoKeeper keep;
    if (chosen_ == &own_) SlashClear(&own_);
  }
  PathChoice(const PathChoice&) = delete;
  PathChoice& operator=(const PathChoice&) = delete;

  bool usable() const { return usable_; }           // false: no memory for the copy
  bool parsed() const { return chosen_ == &own_; }  // the text was used, not the caller's record
  slash_t* get() { return chosen_; }                // null: the whole object
  int count() const { return chosen_ ? chosen_->count : 0; }

 private:
  slash_t own_{};
  OwnedText copy_;
  slash_t* chosen_;
  bool usable_ = true;
};

}  // namespace fairlead
