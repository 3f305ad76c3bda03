// Opening and closing adapter handles.
#include "fairlead/adp/handle.h"

#include "adp/log_source.h"
#include "adp/module.h"
#include "adp/object_name.h"
#include "base/bounded_text.h"
#include "base/owned.h"
#include "fairlead/adp/project.h"
#include "log/out_of_memory.h"

namespace {

using namespace fairlead;

bool needs_module(int32_t type) { return type == ADP_DYN || type == ADP_PRJ; }

}  // namespace

extern "C" adp_t* AdpFileOpen(slash_t* object, const char* object_text) {
  const char* name = required_object_name(object, object_text);
  if (!name) return nullptr;
  Owned<adp_t> adp = zeroed<adp_t>();
  if (!adp) return out_of_memory<adp_t*>(kAdpSource);
  BoundedText(adp->name, sizeof adp->name).add(name);
  adp->type = AdpPath(object, object_text, adp->file, sizeof adp->file);
  if (adp->type < 0) {
    LogWrite(kError, kAdpSource, __LINE__, "get the adp path failed");
    return nullptr;
  }
  if (needs_module(adp->type) && !(adp->module = acquire_module(adp->file))) return nullptr;
  return adp.release();
}

extern "C" void AdpFileClose(adp_t* adp) {
  if (!adp) return;
  if (adp->module) --adp->module->references;  // loaded it stays, even without references
  const Owned<adp_t> owner(adp);
}
