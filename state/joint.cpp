// Joints: events of objects, and the interfaces of other objects that they call.
#include "fairlead/state/joint.h"

#include <unistd.h>

#include <cstring>
#include <utility>

#include "base/fail.h"
#include "fairlead/adp/handle.h"
#include "fairlead/talk/edit.h"
#include "fairlead/talk/node.h"
#include "log/level_words.h"
#include "talk/changed_file.h"
#include "talk/readable.h"
#include "talk/roles.h"
#include "uii/owned_uii.h"

namespace {

using namespace fairlead;

constexpr char kJointFile[] = "/tmp/.var/joint.cache";
constexpr char kSource[] = "joint";
constexpr char kUnnamedEvent[] = "tmp";

// Part of the log text: scripts that watch the log tell the two lines by them.
constexpr int kLineWithData = 57;
constexpr int kLineWithoutData = 65;

constexpr int kDeepestCast = 32;

// How the running casts lie inside each other. One thread at a time, as all of this library.
struct {
  int depth;
  pid_t given_up_in;  // the process in which a cast was refused; a forked child has refused nothing
} casts;

// The text that stands for a target in the file.
class TargetName {
 public:
  TargetName(const char* object, const char* interface) {
    UiiAssembly(object, interface, nullptr, text_, sizeof text_);
  }
  const char* text() const { return text_; }

 private:
  char text_[1024];
};

// An object with this one member; empty owner with errno when memory or the name is missing.
OwnedTalk wrapped(const char* name, OwnedTalk value) {
  OwnedTalk vessel(VesselCreate());
  if (!vessel || !value) return {};
  OwnedTalk member(AxpCreate(name, value.get()));
  if (!member) return {};
  (void)value.release();  // the member's now
  if (VesselAdd(vessel.get(), member.get())) (void)member.release();
  return vessel;
}

// Names go into the file as they are. One that would be read back as something else, with a quote
// of its own for instance, could break the file, and with it every other joint.
OwnedTalk make_joint(const char* object, const char* event, const TargetName& target) {
  OwnedTalk targets = wrapped(target.text(), OwnedTalk(RenderCreate("")));
  OwnedTalk joint = wrapped(object, wrapped(event, std::move(targets)));
  return is_readable(joint.get()) ? std::move(joint) : OwnedTalk(fail<vessel_t*>(EINVAL));
}

vessel_t* targets_of(talk_t* joints, const char* object, const char* event) {
  return VesselGetX(VesselGetX(joints, object), event);
}

// One as JointCreate makes it: with any other value the merge puts it right.
bool holds_joint(talk_t* joints, const char* object, const char* event, const TargetName& target) {
  ErrnoKeeper keep;
  const char* value = VesselGetS(targets_of(joints, object, event), target.text());
  return value && *value == '\0';
}

class NestedCast {
 public:
  explicit NestedCast(const char* object) {
    if (casts.depth == 0) casts.given_up_in = 0;
    if (casts.given_up_in != 0 && casts.given_up_in == getpid()) return;
    if (casts.depth == kDeepestCast) {
      casts.given_up_in = getpid();
      LogWrite(kError, kSource, __LINE__, "casts of %s are nested too deep", object);
      return;
    }
    ++casts.depth;
    allowed_ = true;
  }
  ~NestedCast() {
    if (allowed_) --casts.depth;
  }
  NestedCast(const NestedCast&) = delete;
  NestedCast& operator=(const NestedCast&) = delete;

  explicit operator bool() const { return allowed_; }

 private:
  bool allowed_ = false;
};

// What every target of one cast is told; no data: null.
struct Event {
  const char* object;
  const char* name;
  const char* data;
};

talk_t* call(const char* object, const char* interface, const Event& event) {
  if (event.data) {
    LogWrite(kDebug, kSource, kLineWithData, "joint for %s.%s[%s,%s,%s]", object, interface,
             event.object, event.name, event.data);
    return AdpCall(nullptr, object, interface, nullptr, "%s,%s,%s", event.object, event.name,
                   event.data);
  }
  LogWrite(kDebug, kSource, kLineWithoutData, "joint for %s.%s[%s,%s]", object, interface,
           event.object, event.name);
  return AdpCall(nullptr, object, interface, nullptr, "%s,%s", event.object, event.name);
}

void call_target(const char* identifier, const Event& event) {
  const OwnedUii target(UiiCreate(identifier));
  const char* object = target ? UiiObjectString(target.get()) : nullptr;
  const char* interface = target ? UiiInterface(target.get()) : nullptr;
  if (!object || !interface) return;
  talk_t* answer = call(object, interface, event);
  if (answer != TALK_DONE && answer != TALK_FAILED) TalkFree(answer);
}

// The members of a document that is not trusted: only those of an object, only those with a name.
template <class Action>
void each_member(talk_t* vessel, Action action) {
  if (!is_vessel(vessel)) return;
  for (axp_t* member = VesselEach(vessel, nullptr); member; member = VesselEach(vessel, member))
    if (const char* name = name_of(member)) action(name, member->child);
}

}  // namespace

extern "C" int JointCreate(const char* object, const char* event, const char* target,
                           const char* interface) {
  if (!object || !target || !interface) return 0;
  if (!event) event = kUnnamedEvent;
  const TargetName name(target, interface);
  const OwnedTalk joint = make_joint(object, event, name);
  if (!joint) return 0;
  const OwnedTalk joints = read_to_change(kJointFile);
  // Looked up first: the merge counts a string that it overwrites with the same one as a change.
  if (!joints || holds_joint(joints.get(), object, event, name)) return 0;
  if (VesselModify(joint.get(), joints.get()) <= 0) return 0;
  return VesselFile(joints.get(), kJointFile);
}

extern "C" int JointDelete(const char* object, const char* event, const char* target,
                           const char* interface) {
  if (!object || !target) return 0;
  const OwnedTalk joints(FileVessel(kJointFile));
  if (!joints) return 0;
  vessel_t* targets = targets_of(joints.get(), object, event ? event : kUnnamedEvent);
  axp_t* joint = VesselFind(targets, TargetName(target, interface).text());
  if (!joint || !VesselDelete(targets, joint)) return 0;
  return VesselFile(joints.get(), kJointFile);
}

extern "C" talk_t* JointList(const char* object) {
  OwnedTalk joints(FileVessel(kJointFile));
  if (!joints || !object) return joints.release();
  return VesselCutX(joints.get(), object);
}

extern "C" void JointCast(const char* object, const char* event, talk_t* data) {
  if (!object) return;
  const NestedCast cast(object);
  if (!cast) return;
  const OwnedText text(data ? TalkString(data) : nullptr);
  // Targets would take an event whose data was lost for one without data.
  if (data && !text && errno == ENOMEM) return;

  const OwnedTalk joints(JointList(nullptr));
  const axp_t* events = joints ? VesselFind(joints.get(), object) : nullptr;
  if (!events) return;
  each_member(events->child, [&](const char* name, talk_t* targets) {
    if (event && strcmp(event, name) != 0) return;
    each_member(targets, [&](const char* identifier, talk_t*) {
      call_target(identifier, {object, name, text.get()});
    });
  });
}
