// Interfaces through a handle: list and call.
#include <cstring>

#include "adp/call_parameters.h"
#include "adp/log_source.h"
#include "adp/module.h"
#include "adp/served_by.h"
#include "base/fail.h"
#include "fairlead/adp/shell.h"
#include "fairlead/talk/node.h"
#include "talk/owned_talk.h"

namespace {

using namespace fairlead;

// A record without a name or function ends the table, however many records are announced.
bool is_usable(const adp_interface_t& record) { return record.name && record.function; }

// A text that is not given is left out. False: memory ran out.
bool add_text(vessel_t* description, const char* name, const char* text) {
  return !text || VesselSetS(description, name, text) == 1;
}

bool add_interface(vessel_t* listing, const adp_interface_t& record) {
  if (*record.name == '\0') return true;  // no member can have this name
  OwnedTalk description(VesselCreate());
  if (!description || !add_text(description.get(), "opt", record.opt) ||
      !add_text(description.get(), "intro", record.intro) ||
      !VesselSetX(listing, record.name, description.get()))
    return false;
  (void)description.release();  // the listing's now
  return true;
}

vessel_t* list_module(const adp_t* adp) {
  const ModuleSymbol array(adp->module, "if_array");
  if (!array) {
    LogWrite(kError, kAdpSource, __LINE__, "cannot find the symblic(%s) at %s", array.name(),
             adp->file);
    return nullptr;
  }
  const auto* table = array.value<const adp_interface_t*>();
  if (!table) return nullptr;
  const ModuleSymbol size(adp->module, "if_size");
  if (!size) {
    LogWrite(kError, kAdpSource, __LINE__, "cannot find the symblic(%s) at %s", size.name(),
             adp->file);
    return nullptr;
  }
  OwnedTalk listing(VesselCreate());
  if (!listing) return nullptr;
  const auto count = size.value<int32_t>();
  for (int32_t index = 0; index < count && is_usable(table[index]); ++index)
    if (!add_interface(listing.get(), table[index])) return fail<vessel_t*>(ENOMEM);
  return listing.release();
}

bool complain(const adp_t* adp, const ModuleSymbol& symbol, const char* name) {
  LogWrite(kError, kAdpSource, __LINE__, "cannot find the symblic(%s) at %s for %s.%s",
           symbol.name(), adp->file, adp->name, name);
  return false;
}

// Makes the module's table known, once for all handles.
bool know_table(const adp_t* adp, const char* name) {
  adp_module_t* module = adp->module;
  if (!module->interface_table) {
    const ModuleSymbol array(module, "if_array");
    if (array) module->interface_table = array.value<adp_interface_t*>();
    if (!module->interface_table) return complain(adp, array, name);
  }
  if (module->interface_count <= 0) {
    const ModuleSymbol size(module, "if_size");
    if (size) module->interface_count = size.value<int32_t>();
    if (module->interface_count <= 0) return complain(adp, size, name);
  }
  return true;
}

talk_t* call_module(const adp_t* adp, const char* name, param_t* parameters) {
  if (!know_table(adp, name)) return nullptr;
  const adp_interface_t* table = adp->module->interface_table;
  for (int32_t index = 0; index < adp->module->interface_count && is_usable(table[index]); ++index)
    if (strcmp(table[index].name, name) == 0) return table[index].function(adp->name, parameters);
  LogWrite(kError, kAdpSource, __LINE__, "cannot find the interface(%s) at %s for %s", name,
           adp->file, adp->name);
  return nullptr;
}

}  // namespace

extern "C" vessel_t* AdpIfList(adp_t* adp) {
  if (!adp) return fail<vessel_t*>(EINVAL);
  switch (served_by(adp)) {
    case ServedBy::kModule:
      return list_module(adp);
    case ServedBy::kScript:
      return ShellIfList(adp->file);
    case ServedBy::kStore:
      LogWrite(kDebug, kAdpSource, __LINE__, "cannot list the pure config adp(%s)", adp->name);
      return nullptr;
    default:
      return nullptr;
  }
}

extern "C" talk_t* AdpIfCall(adp_t* adp, const char* name, param_t* parameters, const char* format,
                             ...) {
  if (!adp || !name) return fail<talk_t*>(EINVAL);
  va_list arguments;
  va_start(arguments, format);
  CallParameters call(parameters, format, arguments);
  va_end(arguments);
  if (!call.usable()) return nullptr;

  switch (served_by(adp)) {
    case ServedBy::kModule:
      return call_module(adp, name, call.get());
    case ServedBy::kScript:
      return ShellIfCall(adp, name, call.get());
    case ServedBy::kStore:
      LogWrite(kDebug, kAdpSource, __LINE__, "cannot call interface(%s) at the pure config adp(%s)",
               name, adp->name);
      return nullptr;
    default:
      return nullptr;
  }
}
