// Who serves a handle; the first question of every call on it.
#pragma once

#include "adp/log_source.h"
#include "fairlead/adp/handle.h"
#include "fairlead/adp/project.h"
#include "log/level_words.h"

namespace fairlead {

enum class ServedBy { kModule, kScript, kStore, kNobody };

inline ServedBy served_by(const adp_t* adp) {
  switch (adp->type) {
    case ADP_DYN:
    case ADP_PRJ:
      if (adp->module) return ServedBy::kModule;
      LogWrite(kError, kAdpSource, __LINE__,
               "adp library member cannot be null when type is ADP_DYN/ADP_PRJ");
      return ServedBy::kNobody;
    case ADP_SHELL:
      return ServedBy::kScript;
    case ADP_PURE:
      return ServedBy::kStore;
    default:
      return ServedBy::kNobody;
  }
}

}  // namespace fairlead
