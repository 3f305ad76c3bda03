// Values through a handle: set and get.
#include "adp/module.h"
#include "adp/served_by.h"
#include "base/fail.h"
#include "fairlead/adp/shell.h"
#include "fairlead/config.h"
#include "fairlead/talk/text.h"
#include "talk/owned_talk.h"
#include "talk/path_choice.h"

namespace {

using namespace fairlead;

int32_t set_in_module(adp_t* adp, slash_t* path, talk_t* value) {
  const adp_set_t set = set_function(adp->module);
  return set ? set(adp->name, path, value) : ConfigSet(adp->name, path, nullptr, value);
}

talk_t* get_from_module(adp_t* adp, slash_t* path, const char* path_text) {
  const adp_get_t get = get_function(adp->module);
  return get ? get(adp->name, path) : ConfigGet(adp->name, path, path_text);
}

}  // namespace

extern "C" int32_t AdpAbSet(adp_t* adp, slash_t* path, const char* path_text, talk_t* value,
                            const char* value_text) {
  if (!adp) return fail<int32_t>(EINVAL);
  const OwnedTalk converted(!value && value_text ? StringTalk(value_text) : nullptr);
  // A text that gives no value deletes, but memory that ran out must not.
  if (!value && value_text && !converted && errno == ENOMEM) return 0;
  if (converted) value = converted.get();
  PathChoice choice(path, path_text);
  if (!choice.usable()) return 0;

  switch (served_by(adp)) {
    case ServedBy::kModule:
      return set_in_module(adp, choice.get(), value);
    case ServedBy::kScript:
      return ShellAbSet(adp, choice.get(), value);
    case ServedBy::kStore:
      return ConfigSet(adp->name, choice.get(), nullptr, value);
    default:
      return 0;
  }
}

extern "C" talk_t* AdpAbGet(adp_t* adp, slash_t* path, const char* path_text) {
  if (!adp) return fail<talk_t*>(EINVAL);
  PathChoice choice(path, path_text);
  if (!choice.usable()) return nullptr;

  switch (served_by(adp)) {
    case ServedBy::kModule:
      return get_from_module(adp, choice.get(), path_text);
    case ServedBy::kScript:
      return ShellAbGet(adp, choice.get());
    case ServedBy::kStore:
      return ConfigGet(adp->name, choice.get(), path_text);
    default:
      return nullptr;
  }
}
