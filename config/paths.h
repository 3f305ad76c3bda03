// Where configuration objects live.
#pragma once

#include "base/bounded_text.h"

namespace fairlead {

inline constexpr char kConfigRoot[] = "/etc/config";
inline constexpr char kConfigSuffix[] = ".cfg";

// The file of a configuration object; a name that is too long is cut with it.
class ConfigPath : public PathText {
 public:
  explicit ConfigPath(const char* name) { add(kConfigRoot).add('/').add(name).add(kConfigSuffix); }

  // The folder that holds the file.
  std::string_view folder() const {
    return {text(), static_cast<size_t>(strrchr(text(), '/') - text())};
  }
};

}  // namespace fairlead
