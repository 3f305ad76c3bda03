// Reading from the configuration store.
#include "base/fail.h"
#include "base/result_buffer.h"
#include "config/paths.h"
#include "fairlead/config.h"
#include "fairlead/talk/text.h"
#include "talk/member_path.h"
#include "talk/owned_talk.h"
#include "talk/path_choice.h"

using fairlead::OwnedTalk;
using fairlead::OwnedText;

extern "C" talk_t* ConfigGet(const char* name, slash_t* path, const char* path_text) {
  if (!name) return fairlead::fail<talk_t*>(EINVAL);
  fairlead::PathChoice choice(path, path_text);
  if (!choice.usable() || (choice.parsed() && choice.count() == 0)) return nullptr;
  OwnedTalk document(FileVessel(fairlead::ConfigPath(name).text()));
  if (!document || choice.count() == 0) return document.release();
  return fairlead::cut_at(document.get(), choice.get());
}

extern "C" char* ConfigGetS(const char* name, slash_t* path, const char* path_text, char* buffer,
                            int size) {
  const OwnedTalk value(ConfigGet(name, path, path_text));
  const OwnedText text(value ? TalkString(value.get()) : nullptr);
  if (!text) return nullptr;
  // Shared by all calls without a buffer.
  static char fallback[4096];
  return fairlead::put_result(fairlead::choose_buffer(buffer, size, fallback), text.get());
}
