// An adapter handle until the end of the block, in the block's own memory.
#pragma once

#include "base/errno_keeper.h"
#include "fairlead/adp/handle.h"

namespace fairlead {

// What AdpFileOpen does, with the caller's record. False: it names no adapter and holds nothing.
bool open_adapter(adp_t& adp, slash_t* object, const char* object_text);
void close_adapter(adp_t& adp);

class OpenAdapter {
 public:
  OpenAdapter(slash_t* object, const char* object_text)
      : open_(open_adapter(adp_, object, object_text)) {}
  ~OpenAdapter() {
    if (open_) close_adapter(adp_);
  }
  OpenAdapter(const OpenAdapter&) = delete;
  OpenAdapter& operator=(const OpenAdapter&) = delete;

  explicit operator bool() const { return open_; }
  adp_t* get() { return open_ ? &adp_ : nullptr; }

 private:
  adp_t adp_;
  bool open_;
};

}  // namespace fairlead
