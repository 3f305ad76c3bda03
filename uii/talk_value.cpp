// Nodes inside a document in memory, addressed by slash path: put, read, detach.
#include <cstdarg>

#include "base/bounded_text.h"
#include "base/owned.h"
#include "base/percent.h"
#include "base/result_buffer.h"
#include "fairlead/talk/node.h"
#include "fairlead/talk/text.h"
#include "fairlead/uii.h"
#include "talk/member_path.h"
#include "talk/owned_talk.h"
#include "talk/path_choice.h"
#include "talk/roles.h"

namespace {

using namespace fairlead;

// The text of a path that is given as a format; null when a record, or nothing, must serve.
class FormattedPath {
 public:
  __attribute__((format(printf, 3, 0)))
  FormattedPath(const slash_t* record, const char* format, va_list arguments)
      : given_(!record && format) {
    if (given_) text_.vformat(format, arguments);
  }

  char* text() { return given_ ? text_.text() : nullptr; }

  // The text is taken for a format once more; callers have come to double their percent signs.
  char* text_formatted_again() {
    if (given_) halve_percent(text_.text());
    return text();
  }

 private:
  PathText text_;
  bool given_;
};

int set(talk_t* document, talk_t* value, slash_t* path) {
  if (!path) return 0;
  return (value ? put_at(document, path, value) : remove_at(document, path)) ? 1 : 0;
}

talk_t* get(talk_t* document, const slash_t* path) {
  if (!document || !VesselCheck(document)) return nullptr;
  return path ? find_at(document, path) : document;
}

}  // namespace

extern "C" int TalkUiiSet(talk_t* document, talk_t* value, slash_t* path, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  FormattedPath formatted(path, format, arguments);
  va_end(arguments);
  PathChoice choice(path, formatted.text());
  return set(document, value, choice.get());
}

extern "C" int TalkUiiSetS(talk_t* document, const char* value, slash_t* path, const char* format,
                           ...) {
  va_list arguments;
  va_start(arguments, format);
  FormattedPath formatted(path, format, arguments);
  va_end(arguments);
  PathChoice choice(path, formatted.text_formatted_again());

  OwnedTalk node(StringTalk(value));
  if (!node || !set(document, node.get(), choice.get())) return 0;
  (void)node.release();  // the document's now
  return 1;
}

extern "C" talk_t* TalkUiiGet(talk_t* document, slash_t* path, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  FormattedPath formatted(path, format, arguments);
  va_end(arguments);
  PathChoice choice(path, formatted.text());
  return get(document, choice.get());
}

extern "C" char* TalkUiiGetS(talk_t* document, char* buffer, int size, slash_t* path,
                             const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  FormattedPath formatted(path, format, arguments);
  va_end(arguments);
  PathChoice choice(path, formatted.text_formatted_again());
  if (!choice.get()) return nullptr;

  talk_t* node = get(document, choice.get());
  const OwnedText text(node ? TalkString(node) : nullptr);
  if (!text) return nullptr;
  static char fallback[4096];
  const ResultBuffer result = choose_buffer(buffer, size, fallback);
  return BoundedText(result.text, result.size).add(text.get()).text();
}

extern "C" talk_t* TalkUiiCut(talk_t* document, slash_t* path, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  FormattedPath formatted(path, format, arguments);
  va_end(arguments);
  PathChoice choice(path, formatted.text());
  if (choice.count() == 0) return get(document, nullptr);
  return get(document, nullptr) ? cut_at(document, choice.get()) : nullptr;
}
