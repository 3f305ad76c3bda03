// Where a save happens: the file itself behind all symbolic links, its folder, and the temporary
// beside it.
#pragma once

#include <limits.h>

#include <string_view>

#include "base/bounded_text.h"

namespace fairlead {

inline constexpr std::string_view kSavingSuffix = ".saving";

class SavePaths {
 public:
  // The file need not exist. False with errno: ENAMETOOLONG, ELOOP, or that of the failing step.
  bool find(const char* path);

  const char* target() const { return target_; }
  const char* folder() const { return folder_.text(); }
  const char* temporary() const { return temporary_.text(); }

 private:
  bool follow_links(const char* path);
  bool name_the_rest();

  char target_[PATH_MAX];
  FixedText<PATH_MAX> folder_;
  FixedText<PATH_MAX> temporary_;
};

}  // namespace fairlead
