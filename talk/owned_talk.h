// Owner of a talk document that is not linked into a tree.
#pragma once

#include <memory>

#include "base/errno_keeper.h"
#include "fairlead/talk/node.h"

namespace fairlead {

struct TalkFreer {
  void operator()(talk_t* talk) const {
    ErrnoKeeper keep;
    TalkFree(talk);
  }
};

// Never holds the codes TALK_DONE and TALK_FAILED: they are no documents.
using OwnedTalk = std::unique_ptr<talk_t, TalkFreer>;

}  // namespace fairlead
