// A registry of any bytes: what it binds can be asked for, and a binding made or removed on top of
// it is made or removed.
#include <algorithm>
#include <cstring>

#include "fairlead/adp.h"
#include "fairlead/talk.h"
#include "fuzzing.h"
#include "tree_model.h"

namespace {

using fairlead::OwnedTalk;
using fuzzing::text_of;
using fuzzing::Tree;

constexpr char kFile[] = "/tmp/.var/dadp.cache";
constexpr char kAdapter[] = "/prj/project/adapter.adp";

// As much of a path as counts.
std::string named(fuzzing::Input& input) {
  return std::string(fuzzing::ExactText(input.line()).get()).substr(0, 255);
}

std::string bound(const std::string& object) {
  fuzzing::ExactText text(object);
  slash_t path = {};
  SlashAnalysis(&path, text.get());
  char buffer[256];
  const char* const file = DynAdpPath(&path, buffer, sizeof buffer);
  SlashClear(&path);
  return file ? file : "<none>";
}

// The registry's text without the first member at the path.
std::string without(const OwnedTalk& all, const std::string& object) {
  fuzzing::ExactText text(object);
  slash_t path = {};
  SlashAnalysis(&path, text.get());
  Tree tree = fuzzing::tree_of(all.get());
  Tree* folder = &tree;
  for (int i = 1; i < SlashCount(&path); ++i) folder = folder->first(SlashGet(&path, i));
  const Tree* const gone = folder->first(SlashGet(&path, -1));
  SlashClear(&path);
  auto& members = folder->members;
  members.erase(std::find_if(members.begin(), members.end(),
                             [gone](const fuzzing::Member& one) { return &one.value == gone; }));
  return text_of(tree);
}

// Every string and object at the top of the registry, by its name.
void check_found(const OwnedTalk& all) {
  if (!all) return;
  for (axp_t* member = VesselEach(all.get(), nullptr); member;
       member = VesselEach(all.get(), member)) {
    const std::string name = AxpGet(member);
    const OwnedTalk one(DynAdpList(name.c_str()));
    if (VesselFind(all.get(), name.c_str()) != member) continue;
    talk_t* const value = AxpGetX(member);
    if (!VesselCheck(value) && !RenderCheck(value)) continue;
    REQUIRE(one && text_of(one.get()) == text_of(value));
  }
}

}  // namespace

void fuzzing::prepare() {
  prepare_device();
  put_file(kAdapter, "");
}

void fuzzing::check(Input input) {
  const std::string object = named(input), other = named(input);
  put_file(kFile, input.rest());

  const OwnedTalk all(DynAdpList(nullptr));
  check_found(all);
  char file[256];
  const int code = AdpPath(nullptr, object.c_str(), file, sizeof file);
  REQUIRE(code == -1 || strlen(file) < sizeof file);
  REQUIRE(code != ADP_DYN || file == bound(object));

  const std::string before = file_content(kFile);
  if (DynAdpCreate(object.c_str(), "project/adapter") == 1) {
    REQUIRE(bound(object) == kAdapter);
    REQUIRE(AdpPath(nullptr, object.c_str(), file, sizeof file) == ADP_DYN);
    const OwnedTalk now(DynAdpList(nullptr));
    REQUIRE(now && text_of(now.get()) == file_content(kFile));
  } else {
    REQUIRE(file_content(kFile) == before);
  }
  const std::string was = bound(other);
  const OwnedTalk full(DynAdpList(nullptr));
  if (DynAdpDelete(other.c_str()) == 0)
    REQUIRE(bound(other) == was && was == "<none>");
  else
    REQUIRE(full && file_content(kFile) == without(full, other));
}
