// What a modem is to hear and to say, read from a file. docs/modem.md describes the format.
#pragma once

#include <cstddef>

#include "base/owned.h"

namespace modem {

enum class Act {
  kHear,   // waits for a command
  kSay,    // a line with CR LF on both sides
  kSayOn,  // a further line of the same answer, with CR LF behind it
  kBytes,  // bytes as they are
  kWait,   // milliseconds
  kEcho,   // from here on: 1 with echo, 0 without
  kHangUp,
};

struct Step {
  Act act;
  const char* text;  // of what is heard or said; may hold zero bytes
  size_t length;
  int number;  // of a wait, an echo
  int line;    // in the file
};

class Transcript {
 public:
  // False after an error, which was told on standard error.
  bool read(const char* path);

  const char* path() const { return path_; }
  const Step* begin() const { return steps_.get(); }
  const Step* end() const { return steps_.get() + count_; }

 private:
  bool read_lines();
  bool add(char* line, int number);
  bool add_step(const Step& step);

  const char* path_ = "";
  fairlead::OwnedText content_;
  fairlead::Owned<Step> steps_;
  size_t count_ = 0;
  size_t room_ = 0;
};

}  // namespace modem
