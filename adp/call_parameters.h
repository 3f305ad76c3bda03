// The parameters of an interface call: the caller's list, or one made from a format.
#pragma once

#include <cstdarg>

#include "base/formatted_text.h"
#include "fairlead/talk/path.h"
#include "log/level_words.h"

namespace fairlead {

class CallParameters {
 public:
  // The list wins; an empty format gives no parameters. Ends the process when memory runs out.
  __attribute__((format(printf, 3, 0)))
  CallParameters(param_t* list, const char* format, va_list arguments)
      : chosen_(list) {
    if (list || !format || !*format) return;
    text_ = format_text(format, arguments);
    if (!text_) {
      LogWrite(kOutOfMemory, "adp", __LINE__, "out of memory");
      return;
    }
    if (ParamAnalysis(&own_, text_.get())) chosen_ = &own_;
  }
  ~CallParameters() {
    ErrnoKeeper keep;
    ParamClear(&own_);
  }
  CallParameters(const CallParameters&) = delete;
  CallParameters& operator=(const CallParameters&) = delete;

  param_t* get() { return chosen_; }

 private:
  param_t own_{};
  OwnedText text_;
  param_t* chosen_;
};

}  // namespace fairlead
