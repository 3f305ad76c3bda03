// Nodes inside a document in memory, addressed by slash path: put, read, detach.
#include <cstdarg>

#include "base/bounded_text.h"
#include "base/fail.h"
#include "base/owned.h"
#include "base/percent.h"
#include "base/result_buffer.h"
#include "fairlead/talk/node.h"
#include "fairlead/talk/text.h"
#include "fairlead/uii.h"
#include "talk/member_path.h"
#include "talk/owned_talk.h"
#include "talk/roles.h"

namespace {

using namespace fairlead;

// The place that a call names: the caller's record, or what the format makes. Nothing on the way
// takes memory, so that a path is never lost and the whole document taken in its stead.
class Place {
 public:
  enum Percent { kAsItIs, kFormattedAgain };

  __attribute__((format(printf, 3, 0)))
  Place(slash_t* record, const char* format, va_list arguments, Percent percent = kAsItIs)
      : path_(record) {
    if (record || !format) return;
    usable_ = !text_.vformat(format, arguments).failed();
    // The text is taken for a format once more; callers have come to double their percent signs.
    if (percent == kFormattedAgain) halve_percent(text_.text());
    SlashAnalysis(&own_, text_.text());
    path_ = &own_;
  }

  bool usable() const { return usable_; }  // false: the format was refused
  slash_t* path() const { return path_; }  // null: neither record nor format
  int depth() const { return path_ ? path_->count : 0; }

 private:
  PathText text_;
  slash_t own_{};
  slash_t* path_;
  bool usable_ = true;
};

// False: the value is still the caller's.
bool set(talk_t* document, talk_t* value, const Place& place) {
  if (!place.usable()) return false;
  if (!place.path()) return fail<bool>(EINVAL);
  return value ? put_at(document, place.path(), value) : remove_at(document, place.path());
}

talk_t* get(talk_t* document, const Place& place) {
  if (!place.usable()) return nullptr;
  if (!is_vessel(document)) return fail<talk_t*>(EINVAL);
  return place.depth() > 0 ? find_at(document, place.path()) : document;
}

}  // namespace

extern "C" int TalkUiiSet(talk_t* document, talk_t* value, slash_t* path, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const Place place(path, format, arguments);
  va_end(arguments);
  return set(document, value, place) ? 1 : 0;
}

extern "C" int TalkUiiSetS(talk_t* document, const char* value, slash_t* path, const char* format,
                           ...) {
  va_list arguments;
  va_start(arguments, format);
  const Place place(path, format, arguments, Place::kFormattedAgain);
  va_end(arguments);
  if (!place.usable()) return 0;

  OwnedTalk node(StringTalk(value));
  if (!node || !set(document, node.get(), place)) return 0;
  (void)node.release();  // the document's now
  return 1;
}

extern "C" talk_t* TalkUiiGet(talk_t* document, slash_t* path, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const Place place(path, format, arguments);
  va_end(arguments);
  return get(document, place);
}

extern "C" char* TalkUiiGetS(talk_t* document, char* buffer, int size, slash_t* path,
                             const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const Place place(path, format, arguments, Place::kFormattedAgain);
  va_end(arguments);
  if (!place.path()) return fail<char*>(EINVAL);

  talk_t* node = get(document, place);
  const OwnedText text(node ? TalkString(node) : nullptr);
  if (!text) return nullptr;
  static char fallback[4096];
  return put_result(choose_buffer(buffer, size, fallback), text.get());
}

extern "C" talk_t* TalkUiiCut(talk_t* document, slash_t* path, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const Place place(path, format, arguments);
  va_end(arguments);
  const bool below = place.usable() && place.depth() > 0;
  return below ? cut_at(document, place.path()) : get(document, place);
}
