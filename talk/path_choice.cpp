// The record of a path that was given as text.
#include "talk/path_choice.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

void fairlead::PathChoice::analyse(const char* text, size_t limit) {
  const size_t length = std::min(strlen(text), limit);
  char* copy = short_copy_;
  if (length >= sizeof short_copy_) {
    long_copy_.reset(static_cast<char*>(malloc(length + 1)));
    copy = long_copy_.get();
  }
  usable_ = copy != nullptr;
  if (!usable_) return;
  memcpy(copy, text, length);
  copy[length] = '\0';
  SlashAnalysis(&own_, copy);
  chosen_ = &own_;
}
