// Reasons, one line each: what was asked and why it failed.
#include "tools/he/reason.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "fairlead/adp/handle.h"
#include "fairlead/adp/project.h"
#include "fairlead/config.h"
#include "fairlead/talk/node.h"
#include "tools/telling.h"

namespace he {
namespace {

using fairlead::OwnedTalk;

using AdapterFile = char[fairlead::kPathSize];

int find_adapter(const Asked& asked, AdapterFile& file) {
  return AdpPath(nullptr, asked.object, file, sizeof file);
}

int adapter_type(const Asked& asked) {
  AdapterFile file;
  return find_adapter(asked, file);
}

bool reads(const Asked& asked) { return asked.kind == UII_OBJECT || asked.kind == UII_READ; }

// What kept the store from looking. A child keeps its errno to itself, so the store is asked here.
int store_error(const Asked& asked, int error) {
  if (!asked.isolated) return error;
  errno = 0;
  const OwnedTalk present(ConfigGet(asked.object, nullptr, nullptr));
  return present ? 0 : errno;
}

void tell_call_without_result(const Asked& asked) {
  const int type = adapter_type(asked);
  if (type == ADP_PURE)
    return complain("%s: %s has no adapter, so no interfaces", asked.text, asked.object);
  // Listing its interfaces would start a script a second time, and load a module into this process.
  if (type == ADP_SHELL || asked.isolated) return complain("%s: nothing came back", asked.text);

  OwnedTalk listing(AdpCallList(nullptr, asked.object));
  if (!listing) return complain("%s: the adapter offers no interfaces", asked.text);
  if (!VesselFind(listing.get(), asked.interface))
    return complain("%s: %s has no interface '%s'", asked.text, asked.object, asked.interface);
  complain("%s: nothing came back", asked.text);
}

void tell_empty_listing(const Asked& asked) {
  if (adapter_type(asked) == ADP_PURE)
    complain("%s: %s has no adapter, so no interfaces", asked.text, asked.object);
  else
    complain("%s: the adapter offers no interfaces", asked.text);
}

void tell_refused_write(const Asked& asked, int error) {
  const char* what = asked.value ? "the set was refused" : "the deletion was refused";
  if (const char* why = mishap(asked, error)) return complain("%s: %s: %s", asked.text, what, why);
  if (tools::telling(error)) return complain("%s: %s: %s", asked.text, what, strerror(error));
  if (asked.value && asked.whole_object && RenderCheck(asked.value) &&
      adapter_type(asked) == ADP_PURE)
    return complain("%s: %s: the value of a whole object is a JSON object", asked.text, what);
  complain("%s: %s", asked.text, what);
}

}  // namespace

// Only a child's end can be seen, and only its errno is to be trusted, or the store's.
const char* mishap(const Asked& asked, int error) {
  AdapterFile file;
  const int type = find_adapter(asked, file);
  if (type == ADP_PURE && reads(asked)) {
    const int why = store_error(asked, error);
    return tools::telling(why) ? strerror(why) : nullptr;
  }
  const bool script = type == ADP_SHELL;
  if (error == ECHILD && (script || asked.isolated)) return "the adapter crashed";
  if (script && access(file, X_OK) != 0) return "the script cannot be executed";
  return nullptr;
}

void tell_mishap(const Asked& asked, const char* mishap) { complain("%s: %s", asked.text, mishap); }

void tell_nothing(const Asked& asked) {
  if (asked.kind == UII_CALL && asked.interface) return tell_call_without_result(asked);
  if (asked.kind == UII_CALL) return tell_empty_listing(asked);
  if (strcmp(asked.object, ".") == 0) return complain("no adapter is registered");
  complain("nothing at %s", asked.text);
}

void tell_failure(const Asked& asked, int error) {
  if (asked.kind == UII_CALL) return complain("%s: the call failed", asked.text);
  if (asked.kind == UII_MERGE && !asked.value)
    return complain("%s: there is no value to merge", asked.text);
  if (asked.kind == UII_SET || asked.kind == UII_MERGE) return tell_refused_write(asked, error);
  complain("%s: the adapter reports a failure", asked.text);
}

void tell_odd_answer(const Asked& asked) {
  complain("%s: the answer is neither an object nor a text", asked.text);
}

}  // namespace he
