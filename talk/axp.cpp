// Members: a name and one value.
#include <cstring>

#include "base/fail.h"
#include "fairlead/talk/node.h"
#include "talk/json/node.h"
#include "talk/owned_talk.h"
#include "talk/roles.h"

namespace {

using fairlead::fail;
using fairlead::is_string_node;
using fairlead::OwnedTalk;

}  // namespace

extern "C" axp_t* AxpCreate(const char* name, talk_t* value) {
  if (!name || name[0] == '\0' || !value) return fail<axp_t*>(EINVAL);
  OwnedTalk member(json_new_string(name));
  if (!member || !AxpSetX(member.get(), value)) return nullptr;
  return member.release();
}

extern "C" const char* AxpGet(const axp_t* member) { return RenderString(member); }

extern "C" int AxpSet(axp_t* member, const char* name) {
  if (!is_string_node(member) || !name) return fail<int>(EINVAL);
  return fairlead::set_node_text(member, name) ? 1 : 0;
}

extern "C" talk_t* AxpGetX(const axp_t* member) {
  if (!is_string_node(member)) return fail<talk_t*>(EINVAL);
  return member->child;
}

extern "C" const char* AxpGetS(const axp_t* member) {
  if (!is_string_node(member) || !member->child) return fail<const char*>(EINVAL);
  return fairlead::is_render(member->child) ? member->child->text : nullptr;
}

extern "C" int AxpSetX(axp_t* member, talk_t* value) {
  if (!is_string_node(member) || !fairlead::may_be_linked(value, member)) return fail<int>(EINVAL);
  AxpClearX(member);
  return json_insert_child(member, value) == JSON_DONE ? 1 : 0;
}

extern "C" int AxpSetS(axp_t* member, const char* text) {
  OwnedTalk value(RenderCreate(text));
  if (!value || !AxpSetX(member, value.get())) return 0;
  value.release();
  return 1;
}

extern "C" int AxpClearX(axp_t* member) {
  if (!is_string_node(member)) return fail<int>(EINVAL);
  if (!member->child) return 0;
  TalkFree(member->child);
  return 1;
}

extern "C" talk_t* AxpCutX(axp_t* member) {
  if (!is_string_node(member)) return fail<talk_t*>(EINVAL);
  talk_t* const value = member->child;
  return json_detach_child(member, value) ? value : nullptr;
}
