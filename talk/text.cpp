// Documents as text in memory.
#include "fairlead/talk/text.h"

#include <cstring>

#include "base/ascii.h"
#include "base/errno_keeper.h"
#include "base/fail.h"
#include "fairlead/talk/node.h"
#include "talk/roles.h"

namespace {

using fairlead::fail;
using fairlead::skip_white_space;

// Lost memory is told apart: a caller may take a text without a value for "delete".
int errno_of(json_error error) { return error == JSON_NO_MEMORY ? ENOMEM : EINVAL; }

vessel_t* parse_object(const char* text) {
  json_t* root = nullptr;
  const json_error result = json_parse_document(&root, text);
  return result == JSON_DONE ? root : fail<vessel_t*>(errno_of(result));
}

}  // namespace

extern "C" vessel_t* StringVessel(const char* text) {
  if (!text) return fail<vessel_t*>(EINVAL);
  const char* begin = skip_white_space(text);
  return *begin ? parse_object(begin) : fail<vessel_t*>(EINVAL);
}

extern "C" talk_t* StringTalk(const char* text) {
  if (!text) return fail<talk_t*>(EINVAL);
  const char* begin = skip_white_space(text);
  if (!*begin) return fail<talk_t*>(EINVAL);
  return *begin == '{' ? parse_object(begin) : StringRender(begin);
}

extern "C" char* VesselString(vessel_t* vessel) {
  if (!fairlead::is_vessel(vessel)) return fail<char*>(EINVAL);
  char* text = nullptr;
  const json_error result = json_tree_to_string(vessel, &text);
  return result == JSON_DONE ? text : fail<char*>(errno_of(result));
}

extern "C" char* TalkString(talk_t* talk) {
  if (fairlead::is_vessel(talk)) return VesselString(talk);
  const char* text = fairlead::name_of(talk);
  return text ? strdup(text) : fail<char*>(EINVAL);
}
