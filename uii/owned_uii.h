// Owner of an identifier record.
#pragma once

#include <memory>

#include "base/errno_keeper.h"
#include "fairlead/uii.h"

namespace fairlead {

struct UiiFreer {
  void operator()(uii_t* uii) const {
    ErrnoKeeper keep;
    UiiFree(uii);
  }
};

using OwnedUii = std::unique_ptr<uii_t, UiiFreer>;

}  // namespace fairlead
