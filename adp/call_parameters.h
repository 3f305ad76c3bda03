// The parameters of an interface call: the caller's list, or one made from a format.
#pragma once

#include <cstdarg>

#include "adp/log_source.h"
#include "base/formatted_text.h"
#include "fairlead/talk/path.h"
#include "log/out_of_memory.h"
#include "talk/pieces.h"

namespace fairlead {

class CallParameters {
 public:
  // The list wins; an empty format gives no parameters.
  __attribute__((format(printf, 3, 0)))
  CallParameters(param_t* list, const char* format, va_list arguments)
      : chosen_(list) {
    if (list || !format || !*format) return;
    text_ = format_text(format, arguments);
    if (!text_ && errno != ENOMEM) {
      usable_ = false;
      return;
    }
    if (text_) ParamAnalysis(&own_, text_.get());  // of nothing but blanks: a list without entries
    if (!text_ || !all_entries_made(own_)) usable_ = out_of_memory<bool>(kAdpSource);
    chosen_ = &own_;
  }
  ~CallParameters() {
    ErrnoKeeper keep;
    ParamClear(&own_);
  }
  CallParameters(const CallParameters&) = delete;
  CallParameters& operator=(const CallParameters&) = delete;

  // False: the formatter refused the format, or memory ran out. The call must not be made then, for
  // without its parameters it would ask for something else.
  bool usable() const { return usable_; }
  param_t* get() { return chosen_; }

 private:
  param_t own_{};
  OwnedText text_;
  param_t* chosen_;
  bool usable_ = true;
};

}  // namespace fairlead
