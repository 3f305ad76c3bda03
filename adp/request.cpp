// A whole request named by an identifier.
#include "fairlead/adp/request.h"

#include "adp/request_steps.h"
#include "base/fail.h"
#include "fairlead/adp/handle.h"
#include "fairlead/adp/project.h"
#include "fairlead/config.h"
#include "talk/roles.h"

namespace {

using namespace fairlead;

enum UiiKind : int32_t { kCallKind = 1, kSetKind = 3, kMergeKind = 4 };

int32_t call(const RequestRoad& road, uii_t* identifier, talk_t** out) {
  const char* name = UiiInterface(identifier);
  if (!name) {
    *out = AdpCallList(&identifier->object, nullptr);
    return 0;
  }
  *out = road.call(&identifier->object, nullptr, name, UiiParameter(identifier), nullptr);
  if (!*out || *out == TALK_DONE || *out == TALK_FAILED) return status_of(*out);
  return is_vessel(*out) || is_render(*out) ? 0 : -1;
}

// Objects whose name begins with one of three marks stand for what exists.
bool list(const char* object, talk_t** out) {
  switch (object ? *object : '\0') {
    case ':':
      *out = ConfigList(nullptr);
      return true;
    case '.':
      *out = DynAdpList(nullptr);
      return true;
    case '?':
      *out = ProjectAdpList(nullptr);
      return true;
    default:
      return false;
  }
}

int32_t merge(const RequestRoad& road, const RequestTarget& target, talk_t* value, talk_t** out) {
  if (value) return answer_merge(road, target, value, out);
  *out = road.empty_merge_is_done ? TALK_DONE : nullptr;
  return road.empty_merge_is_done ? 1 : -1;
}

int32_t write(const RequestRoad& road, const RequestTarget& target, uii_t* identifier,
              talk_t** out) {
  talk_t* value = UiiValueTalk(identifier);
  // Lost memory is no empty value, which would delete or count as done.
  if (!value && errno == ENOMEM) {
    *out = TALK_FAILED;
    return -1;
  }
  return identifier->kind == kSetKind ? answer_set(road, target, value, out)
                                      : merge(road, target, value, out);
}

int32_t serve(const RequestRoad& road, uii_t* identifier, talk_t** out) {
  if (!identifier || !out) return fail(EINVAL, -1);
  if (identifier->kind == kCallKind) return call(road, identifier, out);
  if (list(UiiObjectString(identifier), out)) return 0;

  slash_t* path = UiiConfigCount(identifier) > 0 ? &identifier->config : nullptr;
  const RequestTarget target = {&identifier->object, nullptr, path, nullptr};
  const bool writes = identifier->kind == kSetKind || identifier->kind == kMergeKind;
  return writes ? write(road, target, identifier, out) : answer_read(road, target, out);
}

}  // namespace

extern "C" int32_t He(uii_t* identifier, talk_t** out) {
  return serve(plain_road(), identifier, out);
}

extern "C" int32_t SecureHe(uii_t* identifier, talk_t** out) {
  return serve(isolated_road(), identifier, out);
}
