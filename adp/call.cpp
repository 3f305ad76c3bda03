// One call on an object: open, call, close.
#include "adp/call_parameters.h"
#include "adp/log_source.h"
#include "adp/object_name.h"
#include "adp/open_adapter.h"
#include "base/fail.h"

using fairlead::OpenAdapter;

extern "C" int32_t AdpSet(slash_t* object, const char* object_text, slash_t* path,
                          const char* path_text, talk_t* value, const char* value_text) {
  OpenAdapter adp(object, object_text);
  return adp ? AdpAbSet(adp.get(), path, path_text, value, value_text) : 0;
}

extern "C" talk_t* AdpGet(slash_t* object, const char* object_text, slash_t* path,
                          const char* path_text) {
  OpenAdapter adp(object, object_text);
  return adp ? AdpAbGet(adp.get(), path, path_text) : nullptr;
}

extern "C" talk_t* AdpCall(slash_t* object, const char* object_text, const char* name,
                           param_t* parameters, const char* format, ...) {
  if (!name) return fairlead::fail<talk_t*>(EINVAL);
  OpenAdapter adp(object, object_text);
  if (!adp) {
    const char* text = object_text ? object_text : fairlead::object_name(object, nullptr);
    LogWrite(fairlead::kWarning, fairlead::kAdpSource, __LINE__,
             "cannot open the corrent adp file for %s.%s", text ? text : "", name);
    return nullptr;
  }
  va_list arguments;
  va_start(arguments, format);
  fairlead::CallParameters call(parameters, format, arguments);
  va_end(arguments);
  return call.usable() ? AdpIfCall(adp.get(), name, call.get(), nullptr) : nullptr;
}

extern "C" vessel_t* AdpCallList(slash_t* object, const char* object_text) {
  OpenAdapter adp(object, object_text);
  return adp ? AdpIfList(adp.get()) : nullptr;
}
