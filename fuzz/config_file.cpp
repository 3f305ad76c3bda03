// A configuration file of any bytes, after a line with a path and one with a value: it reads as its
// document, and a change through the path is the change of that document.
#include <cstring>

#include "fairlead/config.h"
#include "fairlead/talk.h"
#include "fairlead/uii.h"
#include "fuzzing.h"

namespace {

using fairlead::OwnedTalk;
using fuzzing::document;
using fuzzing::file_content;
using fuzzing::text_of;

constexpr char kFile[] = "/etc/config/object.cfg";

OwnedTalk stored() { return OwnedTalk(ConfigGet("object", nullptr, nullptr)); }

struct Path {
  explicit Path(const std::string& text) : work(text) { SlashAnalysis(&slash, work.get()); }
  ~Path() { SlashClear(&slash); }
  Path(const Path&) = delete;
  Path& operator=(const Path&) = delete;

  fuzzing::ExactText work;
  slash_t slash = {};
};

// What the file would hold; "<none>" where the change is refused or can't be written.
std::string expected(const OwnedTalk& before, const std::string& path, const std::string& value) {
  OwnedTalk changed = before ? document(text_of(before.get())) : OwnedTalk(VesselCreate());
  OwnedTalk given(TalkDup(document(value).get()));  // strings and objects, as a copy has it
  Path place(path);
  if (place.slash.count == 0) return "<none>";
  if (!TalkUiiSet(changed.get(), given.get(), &place.slash, nullptr)) return "<none>";
  (void)given.release();
  const std::string text = text_of(changed.get());
  const OwnedTalk again = document(text);
  return again && text_of(again.get()) == text ? text : "<none>";
}

// Whether a change of that document is one for certain: what is plain can be written.
bool must_succeed(const OwnedTalk& before, const std::string& path, const std::string& value) {
  constexpr char kSpecial[] = "\"\\";
  return before && document(value) && (path + value).find_first_of(kSpecial) == std::string::npos &&
         Path(path).slash.count > 0;
}

}  // namespace

void fuzzing::prepare() { prepare_device(); }

void fuzzing::check(Input input) {
  const std::string path = ExactText(input.line()).get(), value = ExactText(input.line()).get();
  const std::string content = input.rest();
  put_file(kFile, content);

  const OwnedTalk before = stored();
  if (content.find('\0') == std::string::npos) {
    const OwnedTalk parsed(StringVessel(content.c_str()));
    REQUIRE(text_of(before.get()) == text_of(parsed.get()));
  }

  const int result = ConfigSetS("object", nullptr, path.c_str(), value.c_str());
  const OwnedTalk after = stored();
  if (result == 0) REQUIRE(file_content(kFile) == content);
  if (result == 1) REQUIRE(after && file_content(kFile) == text_of(after.get()));
  if (must_succeed(before, path, value)) REQUIRE(result == 1);
  if (document(value) && result == 1)
    REQUIRE(text_of(after.get()) == expected(before, path, value));

  char buffer[64] = "untouched";
  const char* const read = ConfigGetS("object", nullptr, path.c_str(), buffer, sizeof buffer);
  if (read) REQUIRE(strlen(read) < sizeof buffer);
  clear_folder("/etc/config");
}
