// Reads a request, refuses what would do harm by mistake, and puts the rest to the library.
#include "tools/he/request.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "base/descriptor.h"
#include "fairlead/adp/project.h"
#include "fairlead/adp/request.h"
#include "fairlead/talk/text.h"
#include "tools/storable.h"

namespace he {
namespace {

Exit refuse(const char* text, const char* reason) {
  usage_error("'%s': %s", text, reason);
  return kUsage;
}

bool writes(const Asked& asked) { return asked.kind == UII_SET || asked.kind == UII_MERGE; }

// Texts go into a configuration file as they are: a stray quote in one would make the file
// unreadable.
bool spoils_the_store(uii_t* identifier, const Asked& asked) {
  char file[fairlead::kPathSize];
  if (AdpPath(nullptr, asked.object, file, sizeof file) != ADP_PURE) return false;
  for (int i = 1; i <= UiiConfigCount(identifier); ++i)
    if (!tools::storable(UiiConfig(identifier, i))) return true;
  return asked.value && RenderCheck(asked.value) && !tools::storable(RenderString(asked.value));
}

// FdTalk's answer codes are no request.
bool is_document(const talk_t* talk) { return talk && talk != TALK_DONE && talk != TALK_FAILED; }

int kind_of(const char* operation, bool has_value) {
  if (!operation || !*operation) return has_value ? UII_MERGE : UII_READ;
  if (*operation != '=' && *operation != '|') return UII_CALL;
  if (!has_value) return UII_READ;
  return *operation == '=' ? UII_SET : UII_MERGE;
}

}  // namespace

Exit Request::read(const Options& options) {
  asked_.isolated = options.isolated;
  if (options.request_file) return read_document(options.request_file, options.quiet);
  return read_identifier(options.identifier);
}

Exit Request::read_identifier(const char* text) {
  identifier_.reset(UiiCreate(text));
  if (!identifier_) return refuse(text, "no object is named there");
  uii_t* uii = identifier_.get();
  asked_.kind = uii->kind;
  asked_.text = uii->text;
  asked_.object = UiiObjectString(uii);
  asked_.interface = UiiInterface(uii);
  asked_.whole_object = UiiConfigCount(uii) == 0;
  if (!writes(asked_)) return kAnswered;

  asked_.value = UiiValueTalk(uii);
  // Without this the text would count as no value, and the request as a deletion.
  if (UiiValueString(uii) && !asked_.value)
    return refuse(text, "the value begins like a JSON object but is none");
  if (spoils_the_store(uii, asked_))
    return refuse(text, R"(a double quote is written \" and a backslash \\ in a stored text)");
  return kAnswered;
}

Exit Request::read_document(const char* file, bool quiet) {
  const bool standard_input = strcmp(file, "-") == 0;
  fairlead::Descriptor opened(standard_input ? -1 : open(file, O_RDONLY | O_CLOEXEC));
  errno = standard_input || opened ? 0 : errno;
  talk_t* read = errno == 0 ? FdTalk(standard_input ? STDIN_FILENO : opened.get()) : nullptr;
  if (!read && errno != EINVAL) {
    if (!quiet) complain("%s: %s", file, strerror(errno));
    return kFailed;
  }
  if (!is_document(read)) return refuse(file, "there is no request document in it");

  document_.reset(read);
  if (RenderCheck(read)) return read_identifier(RenderString(read));
  const char* object = VesselGetS(read, "adp");
  if (!object) return refuse(file, R"(the request has no text member "adp")");
  describe_document(object);
  return kAnswered;
}

void Request::describe_document(const char* object) {
  vessel_t* document = document_.get();
  const char* operation = VesselGetS(document, "op");
  const char* path = VesselGetS(document, "ab");
  const talk_t* value = VesselGetX(document, "v");

  asked_.kind = kind_of(operation, value);
  asked_.object = object;
  asked_.value = value;
  asked_.whole_object = !path;
  text_.add(object);
  if (asked_.kind == UII_CALL) {
    asked_.interface = operation;
    text_.add('.').add(operation);
  } else if (path) {
    text_.add(':').add(path);
  }
  asked_.text = text_.text();
}

int32_t Request::ask(talk_t** out) {
  errno = 0;
  if (identifier_) return (asked_.isolated ? SecureHe : He)(identifier_.get(), out);
  return (asked_.isolated ? SecureTalkHe : TalkHe)(document_.get(), out);
}

}  // namespace he
