// Requests, a line each, served one after the other: a status has the result that belongs to it,
// what was set is read back, and the store holds nothing but whole objects afterwards.
#include <cstring>

#include "fairlead/adp.h"
#include "fairlead/config.h"
#include "fairlead/talk.h"
#include "fuzzing.h"

namespace {

using fairlead::OwnedTalk;
using fuzzing::document;
using fuzzing::text_of;

struct Answer {
  int status;
  OwnedTalk document;
};

Answer served(talk_t* request) {
  talk_t* out = nullptr;
  const int status = TalkHe(request, &out);
  REQUIRE(status == 1 || status == 0 || status == -1);
  REQUIRE((status == 1) == (out == TALK_DONE));
  REQUIRE(out != TALK_FAILED || status == -1);
  return {status, OwnedTalk(out == TALK_DONE || out == TALK_FAILED ? nullptr : out)};
}

std::string member(talk_t* request, const char* name) {
  if (!VesselCheck(request) || !VesselFind(request, name)) return "";
  const char* text = VesselGetS(request, name);
  return text ? text : "";
}

// A plain string that was set where no listing has the name.
void check_read_back(talk_t* request) {
  const std::string object = member(request, "adp"), value = member(request, "v");
  if (member(request, "op").rfind('=', 0) != 0 || value.empty() || member(request, "ab").empty())
    return;
  if (strchr(":.?", object[0])) return;
  const OwnedTalk read(VesselCreate());
  VesselSetS(read.get(), "adp", object.c_str());
  VesselSetS(read.get(), "ab", member(request, "ab").c_str());
  const Answer answer = served(read.get());
  REQUIRE(answer.status == 0 && answer.document);
  REQUIRE(text_of(answer.document.get()) == value);
}

void serve(const std::string& line) {
  const OwnedTalk request = document(line);
  if (!request) return;
  const Answer answer = served(request.get());
  if (answer.status == 1) check_read_back(request.get());
}

void check_store() {
  for (const std::string& file : fuzzing::files_below("/etc/config")) {
    if (file == "/etc/config/version") continue;
    const OwnedTalk whole(FileVessel(file.c_str()));
    REQUIRE(whole);
  }
}

}  // namespace

void fuzzing::prepare() { prepare_device(); }

void fuzzing::check(Input input) {
  while (!input.empty()) serve(input.line());
  check_store();
  clear_folder("/etc/config");
  clear_folder("/tmp/.var/service");
}
