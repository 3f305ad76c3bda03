// Joints: events of one object that call interfaces of others.
#include "fairlead/state/joint.h"

#include <cerrno>

#include "base/bounded_text.h"
#include "fairlead/talk/text.h"
#include "talk/owned_talk.h"
#include "tools/fairlead/apart.h"
#include "tools/fairlead/output.h"
#include "tools/fairlead/report.h"
#include "tools/storable.h"

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

// "EVENT of OBJECT to TARGET.INTERFACE", as messages name a joint.
class JointName {
 public:
  explicit JointName(const Call& call) {
    text_.format("'%s' of '%s' to '%s", call.argument(1), call.argument(0), call.argument(2));
    if (call.argument(3)) text_.add('.').add(call.argument(3));
    text_.add('\'');
  }
  const char* text() const { return text_.text(); }

 private:
  fairlead::FixedText<1024> text_;
};

}  // namespace

Exit joint_list(const Call& call) {
  const char* object = call.argument(0);
  const fairlead::OwnedTalk joints(JointList(object));
  if (!joints && object) return nothing("'%s' has no joints", object);
  if (!joints) return nothing("there are no joints");
  return show(call, joints.get());
}

Exit joint_create(const Call& call) {
  for (const char* name : call.arguments)
    if (!tools::storable(name))
      return refuse(R"('%s': a double quote is written \" and a backslash \\ in a name)", name);
  errno = 0;
  if (JointCreate(call.argument(0), call.argument(1), call.argument(2), call.argument(3)) == 1)
    return done(call);
  if (errno == 0) return done(call);  // it is there already
  return fail_because(errno, "no joint from %s can be made", JointName(call).text());
}

Exit joint_delete(const Call& call) {
  errno = 0;
  if (JointDelete(call.argument(0), call.argument(1), call.argument(2), call.argument(3)) == 1)
    return done(call);
  if (errno == EINVAL || errno == ENOENT || errno == 0)
    return nothing("there is no joint from %s", JointName(call).text());
  return fail_because(errno, "the joint from %s cannot be taken away", JointName(call).text());
}

Exit joint_cast(const Call& call) { return guarded(call, cast); }

}  // namespace control
