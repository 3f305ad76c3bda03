// A file of joints of any bytes: a joint that is made on top of it is there, one that is taken away
// is gone, and casting harms nobody.
#include "fairlead/state.h"
#include "fairlead/talk.h"
#include "fuzzing.h"

namespace {

using fairlead::OwnedTalk;
using fuzzing::text_of;

constexpr char kFile[] = "/tmp/.var/joint.cache";

bool there(const std::string& object, const std::string& event, const std::string& target) {
  const OwnedTalk events(JointList(object.c_str()));
  if (!events || !VesselCheck(events.get())) return false;
  axp_t* const targets = VesselFind(events.get(), event.c_str());
  if (!targets || !AxpGetX(targets) || !VesselCheck(AxpGetX(targets))) return false;
  return VesselFind(AxpGetX(targets), (target + ".call").c_str()) != nullptr;
}

}  // namespace

void fuzzing::prepare() { prepare_device(); }

void fuzzing::check(Input input) {
  const std::string object = ExactText(input.line()).get(), event = ExactText(input.line()).get();
  const std::string target = std::string(ExactText(input.line()).get()).substr(0, 500);
  put_file(kFile, input.rest());

  const bool before = there(object, event, target);
  const std::string content = file_content(kFile);
  const int made = JointCreate(object.c_str(), event.c_str(), target.c_str(), "call");
  REQUIRE(!(before && made));
  if (made) {
    REQUIRE(there(object, event, target));
    const OwnedTalk all(JointList(nullptr));
    REQUIRE(text_of(all.get()) == file_content(kFile));
  } else {
    REQUIRE(file_content(kFile) == content);
  }

  const OwnedTalk data = document(target);
  JointCast(object.c_str(), event.c_str(), data.get());
  JointCast(object.c_str(), nullptr, nullptr);

  const std::string made_content = file_content(kFile);
  const int gone = JointDelete(object.c_str(), event.c_str(), target.c_str(), "call");
  if (made) REQUIRE(gone == 1 && !there(object, event, target));
  if (!gone) REQUIRE(file_content(kFile) == made_content);
}
