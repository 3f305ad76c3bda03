// Strings, the role tests, and the end of every document.
#include "base/fail.h"
#include "fairlead/talk/node.h"
#include "talk/roles.h"

namespace {

using fairlead::fail;

// A missing node is a mistake of the caller, a node of another role is not.
uint32_t answer(const talk_t* talk, bool has_role) {
  if (!talk) return fail<uint32_t>(EINVAL);
  return has_role ? 1 : 0;
}

}  // namespace

extern "C" render_t* RenderCreate(const char* text) {
  if (!text) return fail<render_t*>(EINVAL);
  return json_new_string(text);
}

extern "C" render_t* StringRender(const char* text) { return RenderCreate(text); }

extern "C" void TalkFree(talk_t* talk) {
  if (talk) json_free_value(&talk);
}

extern "C" uint32_t VesselCheck(const talk_t* talk) {
  return answer(talk, fairlead::is_vessel(talk));
}

extern "C" uint32_t AxpCheck(const talk_t* talk) { return answer(talk, fairlead::is_axp(talk)); }

extern "C" uint32_t RenderCheck(const talk_t* talk) {
  return answer(talk, fairlead::is_render(talk));
}

extern "C" const char* RenderString(const talk_t* talk) {
  const char* text = fairlead::name_of(talk);
  return text ? text : fail<const char*>(EINVAL);
}
