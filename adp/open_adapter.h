// An adapter handle until the end of the block.
#pragma once

#include "base/errno_keeper.h"
#include "fairlead/adp/handle.h"

namespace fairlead {

class OpenAdapter {
 public:
  OpenAdapter(slash_t* object, const char* object_text) : adp_(AdpFileOpen(object, object_text)) {}
  ~OpenAdapter() {
    ErrnoKeeper keep;
    AdpFileClose(adp_);
  }
  OpenAdapter(const OpenAdapter&) = delete;
  OpenAdapter& operator=(const OpenAdapter&) = delete;

  explicit operator bool() const { return adp_ != nullptr; }
  adp_t* get() const { return adp_; }

 private:
  adp_t* adp_;
};

}  // namespace fairlead
