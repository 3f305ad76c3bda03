// Reading, writing when something changes, and merging.
#include "adp/request_steps.h"

#include "adp/object_name.h"
#include "fairlead/adp/handle.h"
#include "fairlead/adp/isolated.h"
#include "fairlead/config.h"
#include "fairlead/talk/edit.h"
#include "fairlead/talk/node.h"
#include "talk/file_text.h"
#include "talk/owned_talk.h"
#include "talk/roles.h"

namespace fairlead {
namespace {

// The present value. An adapter's code is no document to compare with.
OwnedTalk read_current(const RequestRoad& road, const RequestTarget& target) {
  talk_t* current = road.get(target.object, target.object_text, target.path, target.path_text);
  return OwnedTalk(current == TALK_DONE || current == TALK_FAILED ? nullptr : current);
}

// What members are merged into. Null for nothing is no null for what could not be read for a
// moment: the members alone would take the place of all that the store holds. False: that cannot be
// told.
bool read_to_merge(const RequestRoad& road, const RequestTarget& target, OwnedTalk& current) {
  current = read_current(road, target);
  if (current) return true;
  errno = ENOENT;
  const OwnedTalk stored(
      ConfigGet(object_name(target.object, target.object_text), target.path, target.path_text));
  if (!stored) return !content_unknown();
  current = read_current(road, target);  // null once more: the adapter has a mind of its own
  return true;
}

bool write(const RequestRoad& road, const RequestTarget& target, talk_t* value) {
  return road.set(target.object, target.object_text, target.path, target.path_text, value,
                  nullptr) == 1;
}

bool write_change(const RequestRoad& road, const RequestTarget& target, const talk_t* current,
                  talk_t* value) {
  return TalkEqual(current, value) || write(road, target, value);
}

// False: memory ran out on the way, and the object has only some of the members.
bool merge_whole(vessel_t* members, vessel_t* object) {
  const ErrnoKeeper keep;
  errno = 0;
  VesselModify(members, object);
  return errno != ENOMEM;
}

int32_t finish(bool done, talk_t** out) {
  *out = done ? TALK_DONE : TALK_FAILED;
  return done ? 1 : -1;
}

}  // namespace

const RequestRoad& plain_road() {
  static constexpr RequestRoad kRoad = {AdpSet, AdpGet, AdpCall, false};
  return kRoad;
}

const RequestRoad& isolated_road() {
  static constexpr RequestRoad kRoad = {AdpSecureSet, AdpSecureGet, AdpSecureCall, true};
  return kRoad;
}

int32_t answer_read(const RequestRoad& road, const RequestTarget& target, talk_t** out) {
  *out = road.get(target.object, target.object_text, target.path, target.path_text);
  return 0;
}

int32_t answer_set(const RequestRoad& road, const RequestTarget& target, talk_t* value,
                   talk_t** out) {
  const OwnedTalk current = read_current(road, target);
  return finish(write_change(road, target, current.get(), value), out);
}

int32_t answer_merge(const RequestRoad& road, const RequestTarget& target, talk_t* value,
                     talk_t** out) {
  if (!is_vessel(value)) return answer_set(road, target, value, out);
  OwnedTalk current, before;
  if (!read_to_merge(road, target, current)) return finish(false, out);
  const bool merges = is_vessel(current.get());
  if (merges) {
    before.reset(TalkDup(current.get()));
    if (!merge_whole(value, current.get())) return finish(false, out);
    value = current.get();
  }
  const talk_t* present = merges ? before.get() : current.get();
  return finish(write_change(road, target, present, value), out);
}

int32_t status_of(const talk_t* answer) {
  if (answer == TALK_FAILED) return -1;
  return answer == TALK_DONE ? 1 : 0;
}

}  // namespace fairlead
