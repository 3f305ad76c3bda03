// A file of joints of any bytes: a joint that is made on top of it is there, one that is taken away
// is gone, and casting harms nobody.
#include "fairlead/state.h"
#include "fairlead/talk.h"
#include "fuzzing.h"

namespace {

using fairlead::OwnedTalk;
using fuzzing::text_of;

constexpr char kFile[] = "/tmp/.var/joint.cache";

struct Targets {
  int count;   // of all targets of the event
  bool whole;  // this one is among them, as it is made
};

// A target with any other value is put right by being made.
Targets targets_of(const std::string& object, const std::string& event, const std::string& name) {
  const OwnedTalk events(JointList(object.c_str()));
  if (!events || !VesselCheck(events.get())) return {0, false};
  axp_t* const member = VesselFind(events.get(), event.c_str());
  talk_t* const targets = member ? AxpGetX(member) : nullptr;
  if (!targets || !VesselCheck(targets)) return {0, false};
  const char* const value = VesselGetS(targets, name.c_str());
  return {VesselCount(targets), value && *value == '\0'};
}

}  // namespace

void fuzzing::prepare() { prepare_device(); }

void fuzzing::check(Input input) {
  const std::string object = ExactText(input.line()).get(), event = ExactText(input.line()).get();
  const std::string target = std::string(ExactText(input.line()).get()).substr(0, 500);
  put_file(kFile, input.rest());

  const std::string name = target + ".call";
  const Targets before = targets_of(object, event, name);
  const std::string content = file_content(kFile);
  const int made = JointCreate(object.c_str(), event.c_str(), target.c_str(), "call");
  REQUIRE(!(before.whole && made));
  if (made) {
    REQUIRE(targets_of(object, event, name).whole);
    const OwnedTalk all(JointList(nullptr));
    REQUIRE(text_of(all.get()) == file_content(kFile));
  } else {
    REQUIRE(file_content(kFile) == content);
  }

  const OwnedTalk data = document(target);
  JointCast(object.c_str(), event.c_str(), data.get());
  JointCast(object.c_str(), nullptr, nullptr);

  const std::string made_content = file_content(kFile);
  const int count = targets_of(object, event, name).count;
  const int gone = JointDelete(object.c_str(), event.c_str(), target.c_str(), "call");
  if (made) REQUIRE(gone == 1);
  if (gone) REQUIRE(targets_of(object, event, name).count == count - 1);
  if (!gone) REQUIRE(file_content(kFile) == made_content);
}
