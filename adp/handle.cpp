// Opening and closing adapter handles.
#include "fairlead/adp/handle.h"

#include "adp/log_source.h"
#include "adp/module.h"
#include "adp/object_name.h"
#include "adp/open_adapter.h"
#include "base/bounded_text.h"
#include "base/owned.h"
#include "fairlead/adp/project.h"
#include "log/out_of_memory.h"

namespace {

using namespace fairlead;

bool needs_module(int32_t type) { return type == ADP_DYN || type == ADP_PRJ; }

bool open_named(adp_t& adp, const char* name, slash_t* object, const char* object_text) {
  BoundedText(adp.name, sizeof adp.name).add(name);
  adp.type = AdpPath(object, object_text, adp.file, sizeof adp.file);
  if (adp.type < 0) {
    LogWrite(kError, kAdpSource, __LINE__, "get the adp path failed");
    return false;
  }
  adp.module = needs_module(adp.type) ? acquire_module(adp.file) : nullptr;
  return adp.module || !needs_module(adp.type);
}

}  // namespace

bool fairlead::open_adapter(adp_t& adp, slash_t* object, const char* object_text) {
  const char* name = required_object_name(object, object_text);
  return name && open_named(adp, name, object, object_text);
}

void fairlead::close_adapter(adp_t& adp) {
  if (adp.module) --adp.module->references;  // loaded it stays, even without references
}

extern "C" adp_t* AdpFileOpen(slash_t* object, const char* object_text) {
  const char* name = required_object_name(object, object_text);
  if (!name) return nullptr;
  Owned<adp_t> adp = zeroed<adp_t>();
  if (!adp) return out_of_memory<adp_t*>(kAdpSource);
  return open_named(*adp, name, object, object_text) ? adp.release() : nullptr;
}

extern "C" void AdpFileClose(adp_t* adp) {
  if (!adp) return;
  close_adapter(*adp);
  const Owned<adp_t> owner(adp);
}
