// Adapters and registrations.
#include <cerrno>

#include "base/bounded_text.h"
#include "fairlead/adp/handle.h"
#include "fairlead/adp/project.h"
#include "talk/owned_talk.h"
#include "tools/fairlead/apart.h"
#include "tools/fairlead/output.h"
#include "tools/fairlead/report.h"
#include "tools/telling.h"

namespace control {

namespace {

const char* kind_name(int type) {
  switch (type) {
    case ADP_DYN:
      return "registered module";
    case ADP_PRJ:
      return "module";
    case ADP_SHELL:
      return "script";
    default:
      return "configuration";
  }
}

vessel_t* ask_for_calls(const Call& call) {
  const OutputApart apart(call);
  return AdpCallList(nullptr, call.argument(0));
}

Exit list_calls(const Call& call) {
  const fairlead::OwnedTalk interfaces(ask_for_calls(call));
  if (!interfaces) return nothing("'%s' offers no interfaces", call.argument(0));
  return show(call, interfaces.get());
}

}  // namespace

Exit adapter_list(const Call& call) {
  const char* name = call.argument(0);
  const fairlead::OwnedTalk registered(DynAdpList(name));
  if (!registered && name) return nothing("nothing is registered at '%s'", name);
  if (!registered) return nothing("no adapter is registered");
  return show(call, registered.get());
}

Exit adapter_bind(const Call& call) {
  errno = 0;
  if (DynAdpCreate(call.argument(0), call.argument(1)) == 1) return done(call);
  char file[fairlead::kPathSize];
  if (AdpPath(nullptr, call.argument(0), file, sizeof file) < 0)
    return fail("'%s' names no object", call.argument(0));
  slash_t path = {};
  fairlead::FixedText<fairlead::kPathSize> adapter;
  adapter.add(call.argument(1));
  SlashAnalysis(&path, adapter.text());
  const bool exists = ProjectAdpPath(&path, file, sizeof file) != nullptr;
  SlashClear(&path);
  if (!exists) return fail("there is no adapter '%s' in /prj", call.argument(1));
  return fail_because(errno, "'%s' cannot be bound", call.argument(0));
}

Exit adapter_unbind(const Call& call) {
  errno = 0;
  if (DynAdpDelete(call.argument(0)) == 1) return done(call);
  if (tools::telling(errno)) return fail_because(errno, "'%s' cannot be unbound", call.argument(0));
  return nothing("nothing is registered at '%s'", call.argument(0));
}

Exit adapter_show(const Call& call) {
  char file[fairlead::kPathSize] = "";
  const int type = AdpPath(nullptr, call.argument(0), file, sizeof file);
  if (type < 0) return fail("'%s' names no object", call.argument(0));
  const fairlead::OwnedTalk facts(VesselCreate());
  if (!facts || !add_text(facts.get(), "object", call.argument(0)) ||
      !add_text(facts.get(), "kind", kind_name(type)) ||
      (*file && !add_text(facts.get(), "file", file)))
    return fail("out of memory");
  return show(call, facts.get());
}

Exit adapter_call_list(const Call& call) { return guarded(call, list_calls); }

}  // namespace control
