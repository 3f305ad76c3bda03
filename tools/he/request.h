// One request: read from the command line or from a document, put to the library, and described for
// the messages.
#pragma once

#include "base/bounded_text.h"
#include "talk/owned_talk.h"
#include "tools/he/options.h"
#include "tools/he/report.h"
#include "uii/owned_uii.h"

namespace he {

// What was asked, as the reason of a failure needs it.
struct Asked {
  int kind = UII_OBJECT;
  const char* text = "";    // as typed, or made from the members of a document
  const char* object = "";  // the object path
  const char* interface = nullptr;
  bool whole_object = true;       // no configuration path
  bool isolated = false;          // the adapter must not be loaded into this process
  const talk_t* value = nullptr;  // what to write
};

class Request {
 public:
  // kAnswered: it can be asked. Else the exit status; a usage error has been told, and so has any
  // other one unless `options` ask for silence.
  Exit read(const Options& options);

  // As the library's entry points: the status, and the answer in `out`.
  int32_t ask(talk_t** out);

  const Asked& asked() const { return asked_; }

 private:
  Exit read_identifier(const char* text);
  Exit read_document(const char* file, bool quiet);
  void describe_document(const char* object);

  fairlead::OwnedUii identifier_;
  fairlead::OwnedTalk document_;
  fairlead::FixedText<512> text_;
  Asked asked_;
};

}  // namespace he
