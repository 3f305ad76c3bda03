// Joints: events of one object that call interfaces of others.
#include "fairlead/state/joint.h"

#include <cerrno>

#include "fairlead/talk/text.h"
#include "talk/owned_talk.h"
#include "tools/fairlead/apart.h"
#include "tools/fairlead/output.h"
#include "tools/fairlead/report.h"

namespace control {

namespace {

Exit cast(const Call& call) {
  const char* text = call.argument(2);
  const fairlead::OwnedTalk data(text ? StringTalk(text) : nullptr);
  if (text && !data)
    return refuse("'%s' is no data: it is empty, or begins like an object and is none", text);
  {
    const OutputApart apart(call);
    JointCast(call.argument(0), call.argument(1), data.get());
  }
  return done(call);
}

}  // namespace

Exit joint_list(const Call& call) {
  const char* object = call.argument(0);
  const fairlead::OwnedTalk joints(JointList(object));
  if (!joints && object) return nothing("'%s' has no joints", object);
  if (!joints) return nothing("there are no joints");
  return show(call, joints.get());
}

Exit joint_create(const Call& call) {
  errno = 0;
  if (JointCreate(call.argument(0), call.argument(1), call.argument(2), call.argument(3)) == 1)
    return done(call);
  if (errno == 0) return done(call);  // it is there already
  return fail_because(errno, "the joint cannot be made");
}

Exit joint_delete(const Call& call) {
  errno = 0;
  if (JointDelete(call.argument(0), call.argument(1), call.argument(2), call.argument(3)) == 1)
    return done(call);
  if (errno == EINVAL || errno == ENOENT || errno == 0) return nothing("there is no such joint");
  return fail_because(errno, "the joint cannot be taken away");
}

Exit joint_cast(const Call& call) { return guarded(call, cast); }

}  // namespace control
