// The parts of a parsed identifier. A null record becomes a null piece, which every function of the
// path and parameter families refuses with EINVAL.
#include <cerrno>

#include "base/fail.h"
#include "fairlead/talk/text.h"
#include "fairlead/uii.h"

namespace {

using fairlead::fail;

slash_t* object_of(uii_t* uii) { return uii ? &uii->object : nullptr; }
slash_t* config_of(uii_t* uii) { return uii ? &uii->config : nullptr; }
param_t* parameter_of(uii_t* uii) { return uii ? &uii->parameter : nullptr; }

}  // namespace

extern "C" const char* UiiString(uii_t* uii) { return uii ? uii->text : fail<char*>(EINVAL); }

extern "C" int UiiObjectCount(uii_t* uii) { return SlashCount(object_of(uii)); }

extern "C" int UiiConfigCount(uii_t* uii) { return SlashCount(config_of(uii)); }

extern "C" const char* UiiObject(uii_t* uii, int index) { return SlashGet(object_of(uii), index); }

extern "C" const char* UiiConfig(uii_t* uii, int index) { return SlashGet(config_of(uii), index); }

extern "C" const char* UiiObjectString(uii_t* uii) { return SlashString(object_of(uii)); }

extern "C" const char* UiiConfigString(uii_t* uii) { return SlashString(config_of(uii)); }

extern "C" char** UiiValue(uii_t* uii) { return uii ? &uii->value : fail<char**>(EINVAL); }

extern "C" const char* UiiValueString(uii_t* uii) { return uii ? uii->value : fail<char*>(EINVAL); }

extern "C" talk_t* UiiValueTalk(uii_t* uii) {
  if (!uii) return fail<talk_t*>(EINVAL);
  if (!uii->talk) uii->talk = StringTalk(uii->value);
  return uii->talk;
}

extern "C" const char* UiiInterface(uii_t* uii) {
  return uii ? uii->interface : fail<char*>(EINVAL);
}

extern "C" param_t* UiiParameter(uii_t* uii) {
  return uii ? &uii->parameter : fail<param_t*>(EINVAL);
}

extern "C" int UiiParamCount(uii_t* uii) { return ParamCount(parameter_of(uii)); }

extern "C" param_entry_t* UiiParamGet(uii_t* uii, int index) {
  return ParamGet(parameter_of(uii), index);
}

extern "C" talk_t* UiiParamGetT(uii_t* uii, int index) {
  return ParamGetT(parameter_of(uii), index);
}

extern "C" const char* UiiParamGetS(uii_t* uii, int index) {
  return ParamGetS(parameter_of(uii), index);
}

extern "C" const char* UiiParamString(uii_t* uii) { return ParamString(parameter_of(uii)); }
