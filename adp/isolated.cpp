// The isolated calls: an adapter's set, get or interface call, made by a child.
#include "fairlead/adp/isolated.h"

#include <unistd.h>

#include <cstring>

#include "adp/call_parameters.h"
#include "adp/child_call.h"
#include "adp/log_source.h"
#include "adp/object_name.h"
#include "adp/open_adapter.h"
#include "base/bounded_text.h"
#include "base/fail.h"
#include "fairlead/misc/process.h"
#include "fairlead/talk/text.h"
#include "fairlead/uii.h"

namespace {

using namespace fairlead;

constexpr char kNothing = 0x00;
constexpr char kDone = 0x01;
constexpr char kFailed = 0x02;
constexpr int kWriteFailed = 127;

bool write_all(int fd, const char* bytes, size_t size) {
  while (size > 0) {
    const ssize_t written = write(fd, bytes, size);
    if (written < 0 && errno != EINTR) return false;
    if (written < 0) continue;
    bytes += written;
    size -= static_cast<size_t>(written);
  }
  return true;
}

void answer_byte(int fd, char byte) { write_all(fd, &byte, 1); }

// What the child does with the object; the adapter is opened there, so that loading it can harm
// nobody either.
struct ObjectRequest {
  slash_t* object;
  const char* object_text;
  const char* name;  // in messages

  // False: it is a code or nothing, and has been answered as such.
  bool is_document(int fd, talk_t* answer) const {
    if (answer && answer != TALK_DONE && answer != TALK_FAILED) return true;
    const char code[] = {answer == TALK_DONE ? kDone : kFailed, kNothing};
    if (answer)
      write_all(fd, code, sizeof code);
    else
      answer_byte(fd, kNothing);
    return false;
  }

  // The document's text, with `ending` bytes of its terminator.
  void answer_document(int fd, talk_t* document, const char* complaint, size_t ending) const {
    const OwnedText text(TalkString(document));
    if (!text) {
      LogWrite(kWarning, kAdpSource, __LINE__, complaint, name);
      return answer_byte(fd, kNothing);
    }
    if (!write_all(fd, text.get(), strlen(text.get()) + ending)) _exit(kWriteFailed);
  }
};

struct SetRequest : ObjectRequest {
  slash_t* path;
  const char* path_text;
  talk_t* value;
  const char* value_text;

  void serve(int fd) const {
    OpenAdapter adp(object, object_text);
    answer_byte(fd, AdpAbSet(adp.get(), path, path_text, value, value_text) == 1 ? kDone : kFailed);
  }
};

struct GetRequest : ObjectRequest {
  slash_t* path;
  const char* path_text;

  void serve(int fd) const {
    OpenAdapter adp(object, object_text);
    talk_t* answer = AdpAbGet(adp.get(), path, path_text);
    if (is_document(fd, answer))
      answer_document(fd, answer, "AdpSecureGet( %s ) return wrong format data", 0);
  }
};

struct CallRequest : ObjectRequest {
  const char* interface;
  param_t* parameters;

  void serve(int fd) const {
    set_proc_title();
    set_proc_name(name);
    OpenAdapter adp(object, object_text);
    talk_t* answer = AdpIfCall(adp.get(), interface, parameters, nullptr);
    if (is_document(fd, answer)) answer_document(fd, answer, "%s return wrong format data", 1);
  }
};

}  // namespace

extern "C" int32_t AdpSecureSet(slash_t* object, const char* object_text, slash_t* path,
                                const char* path_text, talk_t* value, const char* value_text) {
  const char* name = required_object_name(object, object_text);
  if (!name) return 0;
  const SetRequest request{{object, object_text, name}, path, path_text, value, value_text};
  talk_t* answer = call_child({kAdpSource, "AdpSecureSet", name, name}, request);
  drop_answer(answer);
  return answer == TALK_DONE ? 1 : 0;
}

extern "C" talk_t* AdpSecureGet(slash_t* object, const char* object_text, slash_t* path,
                                const char* path_text) {
  const char* name = required_object_name(object, object_text);
  if (!name) return nullptr;
  const GetRequest request{{object, object_text, name}, path, path_text};
  return call_child({kAdpSource, "AdpSecureGet", name, name}, request);
}

extern "C" talk_t* AdpSecureCall(slash_t* object, const char* object_text, const char* name,
                                 param_t* parameters, const char* format, ...) {
  if (!name) return fail<talk_t*>(EINVAL);
  const char* own_name = required_object_name(object, object_text);
  if (!own_name) return nullptr;
  va_list arguments;
  va_start(arguments, format);
  CallParameters call(parameters, format, arguments);
  va_end(arguments);
  if (!call.usable()) return nullptr;

  char identifier[kPathSize];
  UiiAssembly(own_name, name, nullptr, identifier, sizeof identifier);
  const CallRequest request{{object, object_text, identifier}, name, call.get()};
  return call_child({kAdpSource, "AdpSecureCall", identifier, identifier, false}, request);
}
